#include "monitorwindow.h"

#include "logfeed.h"
#include "progressdelegate.h"

#include <algologic.h>

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
#include <QVBoxLayout>

namespace {

constexpr int kMaxColumnWidth = 260;
constexpr int kMaxLogLines = 5000;

QTableView* makeTable(QWidget* parent)
{
    auto* view = new QTableView(parent);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setAlternatingRowColors(true);
    view->setWordWrap(false);
    view->verticalHeader()->setVisible(false);
    view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + 8);
    view->horizontalHeader()->setStretchLastSection(true);
    view->horizontalHeader()->setHighlightSections(false);
    return view;
}

// A titled pane: a bold label above `content`.
QWidget* pane(QLabel* title, QWidget* content, QWidget* extra = nullptr)
{
    auto* widget = new QWidget;
    auto* layout = new QVBoxLayout(widget);
    layout->setContentsMargins(6, 6, 6, 0);
    auto* header = new QHBoxLayout;
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    header->addWidget(title);
    header->addStretch();
    if (extra)
        header->addWidget(extra);
    layout->addLayout(header);
    layout->addWidget(content);
    return widget;
}

// Columns shown only when some row has something in them.
const QList<int> kOptionalInstanceColumns{
    InstanceTableModel::AvgPriceColumn,  InstanceTableModel::TargetAmountColumn,
    InstanceTableModel::AmountProgressColumn, InstanceTableModel::StartColumn,
    InstanceTableModel::EndColumn,       InstanceTableModel::CommentColumn,
    InstanceTableModel::RemarkColumn};
QList<int> optionalLegColumns()
{
    QList<int> columns{SymbolTableModel::AvgPriceColumn, SymbolTableModel::DealAmountColumn,
                       SymbolTableModel::EntrustColumn, SymbolTableModel::EntrustProgressColumn};
    for (int column = SymbolTableModel::EntrustTimeColumn; column < SymbolTableModel::ColumnCount;
         ++column)
        columns.append(column);
    return columns;
}

// A cell holds something unless its text is empty or its value is a zero.
bool holdsSomething(const QModelIndex& index)
{
    const QVariant value = index.data(SnapshotTableModel::SortRole);
    const bool zero = value.userType() == QMetaType::Double && value.toDouble() == 0.0;
    return !zero && !index.data().toString().isEmpty();
}

void hideEmptyColumns(QTableView* view, const QList<int>& optional)
{
    const QAbstractItemModel* model = view->model();
    for (int column : optional) {
        bool empty = true;
        for (int row = 0; row < model->rowCount() && empty; ++row)
            empty = !holdsSomething(model->index(row, column));
        view->setColumnHidden(column, empty);
    }
}

void fitTable(QTableView* view)
{
    view->resizeColumnsToContents();
    const int columns = view->model() ? view->model()->columnCount() : 0;
    for (int column = 0; column < columns; ++column) {
        if (view->columnWidth(column) > kMaxColumnWidth)
            view->setColumnWidth(column, kMaxColumnWidth);
    }
}

} // namespace

MonitorWindow::MonitorWindow(InstanceTableModel* instances, SymbolTableModel* legs,
                             LogFeed* logs, QWidget* parent)
    : QMainWindow(parent)
    , m_instances(instances)
    , m_legs(legs)
    , m_logs(logs)
{
    setWindowTitle(QStringLiteral("algo-monitor"));
    buildInstanceView();
    buildLegView();

    m_logView = new QPlainTextEdit;
    m_logView->setReadOnly(true);
    m_logView->setMaximumBlockCount(kMaxLogLines);
    m_logView->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_logView->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_logTitle = new QLabel(QStringLiteral("Log"));
    connect(m_logs, &LogFeed::linesAdded, this, &MonitorWindow::onLogLinesAdded);

    m_filter = new QLineEdit;
    m_filter->setPlaceholderText(QStringLiteral("Filter instances"));
    m_filter->setClearButtonEnabled(true);
    m_filter->setMinimumWidth(280);
    connect(m_filter, &QLineEdit::textChanged, m_proxy,
            &QSortFilterProxyModel::setFilterFixedString);

    auto* splitter = new QSplitter(Qt::Vertical);
    splitter->addWidget(pane(new QLabel(QStringLiteral("Instances")), m_instanceView, m_filter));
    splitter->addWidget(pane(m_legTitle, m_legView));
    splitter->addWidget(pane(m_logTitle, m_logView));
    splitter->setSizes({330, 200, 200});
    setCentralWidget(splitter);

    m_replayStatus = new QLabel;
    statusBar()->addWidget(m_replayStatus);
    resize(1280, 800);
}

void MonitorWindow::buildInstanceView()
{
    m_proxy = new QSortFilterProxyModel(this);
    m_proxy->setSourceModel(m_instances);
    m_proxy->setSortRole(SnapshotTableModel::SortRole);
    m_proxy->setFilterKeyColumn(-1);
    m_proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);

    m_instanceView = makeTable(this);
    m_instanceView->setModel(m_proxy);
    m_instanceView->setSortingEnabled(true);
    m_instanceView->sortByColumn(InstanceTableModel::IdColumn, Qt::AscendingOrder);
    auto* bars = new ProgressDelegate(m_instanceView);
    m_instanceView->setItemDelegateForColumn(InstanceTableModel::ProgressColumn, bars);
    m_instanceView->setItemDelegateForColumn(InstanceTableModel::AmountProgressColumn, bars);
    connect(m_instanceView->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &MonitorWindow::onCurrentInstanceChanged);
    // The first instance that appears becomes current, so that legs show.
    connect(m_proxy, &QAbstractItemModel::rowsInserted, this, [this] { selectInstance(); });
    const auto hide = [this] { hideEmptyColumns(m_instanceView, kOptionalInstanceColumns); };
    connect(m_proxy, &QAbstractItemModel::rowsInserted, this, hide);
    connect(m_proxy, &QAbstractItemModel::rowsRemoved, this, hide);
    connect(m_proxy, &QAbstractItemModel::dataChanged, this, hide);
}

void MonitorWindow::buildLegView()
{
    m_legView = makeTable(this);
    m_legView->setModel(m_legs);
    auto* bars = new ProgressDelegate(m_legView);
    m_legView->setItemDelegateForColumn(SymbolTableModel::ProgressColumn, bars);
    m_legView->setItemDelegateForColumn(SymbolTableModel::EntrustProgressColumn, bars);
    m_legTitle = new QLabel(QStringLiteral("Legs"));
    const auto hide = [this] { hideEmptyColumns(m_legView, optionalLegColumns()); };
    connect(m_legs, &QAbstractItemModel::modelReset, this, hide);
    connect(m_legs, &QAbstractItemModel::rowsInserted, this, hide);
    connect(m_legs, &QAbstractItemModel::dataChanged, this, hide);
}

void MonitorWindow::selectInstance(const QString& instanceID)
{
    QModelIndex target;
    for (int row = 0; row < m_proxy->rowCount() && !instanceID.isEmpty(); ++row) {
        const QModelIndex index = m_proxy->index(row, 0);
        if (index.data(SnapshotTableModel::KeyRole).toString() == instanceID)
            target = index;
    }
    if (!target.isValid()) {
        const bool hasCurrent = m_instanceView->selectionModel()->currentIndex().isValid();
        if (hasCurrent || m_proxy->rowCount() == 0)
            return;
        target = m_proxy->index(0, 0);
    }
    m_instanceView->selectionModel()->setCurrentIndex(
        target, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_instanceView->scrollTo(target);
}

void MonitorWindow::fitColumns()
{
    hideEmptyColumns(m_instanceView, kOptionalInstanceColumns);
    hideEmptyColumns(m_legView, optionalLegColumns());
    fitTable(m_instanceView);
    fitTable(m_legView);
}

void MonitorWindow::showReplayProgress(int applied, int total)
{
    m_replayStatus->setText(
        QStringLiteral("Replayed %1 of %2 operations").arg(applied).arg(total));
}

void MonitorWindow::onCurrentInstanceChanged()
{
    const QString id = m_instanceView->selectionModel()
                           ->currentIndex()
                           .data(SnapshotTableModel::KeyRole)
                           .toString();
    m_legs->setInstanceID(id);
    m_legTitle->setText(id.isEmpty() ? QStringLiteral("Legs")
                                     : QStringLiteral("Legs of %1").arg(id));
    m_logTitle->setText(id.isEmpty() ? QStringLiteral("Log") : QStringLiteral("Log of %1").arg(id));
    m_logView->setPlainText(m_logs->lines(id).join(QLatin1Char('\n')));
    m_logs->follow(id); // drains its console lines, which arrive through linesAdded
    fitTable(m_legView);
}

void MonitorWindow::onLogLinesAdded(const QString& instanceID, const QStringList& lines)
{
    if (instanceID != m_legs->instanceID())
        return;
    for (const QString& line : lines)
        m_logView->appendPlainText(line);
}
