#pragma once

// The monitor's window: the instance table (sortable, filtered by a line
// edit) on top, the legs of the current instance below it, and the log lines
// of that instance at the bottom. It shows the library's models; it reads
// nothing from the library itself.

#include <QMainWindow>

class InstanceTableModel;
class LogFeed;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSortFilterProxyModel;
class QTableView;
class SymbolTableModel;

class MonitorWindow : public QMainWindow
{
    Q_OBJECT
public:
    // The models and the feed must outlive the window.
    MonitorWindow(InstanceTableModel* instances, SymbolTableModel* legs, LogFeed* logs,
                  QWidget* parent = nullptr);

    // Makes `instanceID` current, or the first row when it is empty or not
    // shown; nothing when a row is current already and no ID is asked for.
    void selectInstance(const QString& instanceID = QString());
    // Optional columns that no row fills hidden, widths to the contents
    // (long texts capped).
    void fitColumns();
    void showReplayProgress(int applied, int total);

private:
    void buildInstanceView();
    void buildLegView();
    void onCurrentInstanceChanged();
    void onLogLinesAdded(const QString& instanceID, const QStringList& lines);

    InstanceTableModel* m_instances;
    SymbolTableModel* m_legs;
    LogFeed* m_logs;
    QSortFilterProxyModel* m_proxy = nullptr;
    QLineEdit* m_filter = nullptr;
    QTableView* m_instanceView = nullptr;
    QTableView* m_legView = nullptr;
    QLabel* m_legTitle = nullptr;
    QLabel* m_logTitle = nullptr;
    QPlainTextEdit* m_logView = nullptr;
    QLabel* m_replayStatus = nullptr;
};
