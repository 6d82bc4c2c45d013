#include "fuzzsupport.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace FuzzSupport {

namespace {

void silentHandler(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        std::abort();
    }
}

} // namespace

void startQt()
{
    static int argc = 1;
    static char name[] = "algologic-fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = nullptr;
    if (app)
        return;
    qInstallMessageHandler(silentHandler);
    app = new QCoreApplication(argc, argv);
}

Input splitInput(const uint8_t* data, size_t size, int count)
{
    Input input;
    if (size == 0)
        return input;
    input.choice = data[0] % count;
    input.bytes = QByteArray(reinterpret_cast<const char*>(data + 1), int(size - 1));
    input.text = QString::fromUtf8(input.bytes);
    return input;
}

void drainLogs(const QStringList& instanceIds)
{
    LogMgr* logs = LogMgr::instance();
    QHash<QString, QList<QString>> progress;
    logs->popInstProgress(progress);
    QHash<QString, QStringList> messages;
    logs->popInstMsg(messages);
    QHash<QString, QString> diffs;
    logs->popInstDiff(diffs);
    for (const QString& id : instanceIds) {
        QList<QString> lines;
        logs->popInstLog(id, lines);
    }
}

} // namespace FuzzSupport
