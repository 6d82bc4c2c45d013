// algo-monitor: replays captured algo-server sessions through the library
// and shows the instances, the current instance's legs and its log lines in
// a window while the session unfolds; optionally saves a picture of the
// window once the replay is over.

#include "logfeed.h"
#include "logfilter.h"
#include "monitorwindow.h"
#include "replaydriver.h"

#include <algologic.h>

#include <QApplication>
#include <QCommandLineParser>
#include <QPixmap>
#include <QTextStream>
#include <QTimer>

#include <cstring>
#include <functional>

namespace {

constexpr int kLogPollMs = 200;

// A picture needs no display: use the offscreen platform unless the user
// chose one. Decided before QApplication exists, hence the plain scan.
void preferOffscreenForScreenshots(int argc, char** argv)
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--screenshot") == 0
            || std::strncmp(argv[i], "--screenshot=", 13) == 0) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            return;
        }
    }
}

// The operations after which no notification tells the models what changed.
bool raisesNoNotification(AlgoReplay::OpKind kind)
{
    using AlgoReplay::OpKind;
    return kind == OpKind::Create || kind == OpKind::SymbolExt || kind == OpKind::Detail
        || kind == OpKind::Forget;
}

// Runs `work` once the notifications already queued have reached the models
// and the models' coalesced flushes have run: two turns of the event loop.
void afterPendingUpdates(QObject* context, std::function<void()> work)
{
    QTimer::singleShot(0, context, [context, work] { QTimer::singleShot(0, context, work); });
}

} // namespace

int main(int argc, char** argv)
{
    preferOffscreenForScreenshots(argc, argv);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("algo-monitor"));
    QApplication::setApplicationVersion(QStringLiteral(ALGOLOGIC_VERSION_STRING));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Replays captured algo-server sessions (JSON lines) through the AlgoLogic library\n"
        "and shows its instances, legs and logs in a window."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption speedOption(
        QStringLiteral("speed"),
        QStringLiteral("Operations per second; 0 replays as fast as possible (default 10)."),
        QStringLiteral("ops"), QStringLiteral("10"));
    const QCommandLineOption screenshotOption(
        QStringLiteral("screenshot"),
        QStringLiteral("After the replay, save the window as a PNG picture and exit "
                       "(offscreen unless QT_QPA_PLATFORM is set)."),
        QStringLiteral("file"));
    const QCommandLineOption selectOption(
        QStringLiteral("select"),
        QStringLiteral("The instance whose legs and log are shown (default: the first)."),
        QStringLiteral("id"));
    const QCommandLineOption mineOption(
        QStringLiteral("mine"),
        QStringLiteral("Only instances of the logged-in account and those without creator."));
    const QCommandLineOption verboseOption(
        QStringLiteral("verbose"),
        QStringLiteral("Show the library's debug and info log lines on stderr."));
    parser.addOptions(
        {speedOption, screenshotOption, selectOption, mineOption, verboseOption});
    parser.addPositionalArgument(QStringLiteral("CAPTURE"),
                                 QStringLiteral("Capture files, in order; - reads standard input."),
                                 QStringLiteral("CAPTURE..."));
    parser.process(app);

    AlgoReplay::filterLibraryLog(parser.isSet(verboseOption));

    QTextStream errors(stderr);
    bool speedValid = false;
    const double speed = parser.value(speedOption).toDouble(&speedValid);
    if (!speedValid || speed < 0.0) {
        errors << "algo-monitor: --speed takes a number of operations per second, 0 or more\n";
        return 2;
    }
    const QStringList captures = parser.positionalArguments();
    if (captures.isEmpty()) {
        errors << "algo-monitor: no capture given\n" << parser.helpText();
        return 2;
    }

    AlgoReplay::Replayer replayer(AlgoReplay::ReplayOptions(), errors);
    ReplayDriver driver(replayer, errors);
    if (!driver.load(captures))
        return 2;

    InstanceTableModel instances(Algo_Values::AlgoGlobalType::all,
                                 !parser.isSet(mineOption));
    SymbolTableModel legs;
    LogFeed logs;
    MonitorWindow window(&instances, &legs, &logs);
    const QString selected = parser.value(selectOption);
    const QString screenshot = parser.value(screenshotOption);

    QObject::connect(&driver, &ReplayDriver::operationApplied, &window,
                     [&](AlgoReplay::OpKind kind, int applied, int total) {
                         if (raisesNoNotification(kind)) {
                             instances.refresh();
                             legs.refresh();
                         }
                         window.showReplayProgress(applied, total);
                     });
    int status = 0;
    QObject::connect(&driver, &ReplayDriver::finished, &window, [&] {
        afterPendingUpdates(&window, [&] {
            window.selectInstance(selected);
            logs.poll();
            window.fitColumns();
            if (screenshot.isEmpty())
                return;
            // Once the views have laid out the rows the selection brought.
            afterPendingUpdates(&window, [&] {
                if (!window.grab().save(screenshot, "PNG")) {
                    errors << "algo-monitor: cannot write " << screenshot << '\n';
                    status = 1;
                }
                QApplication::exit(status);
            });
        });
    });

    window.show();
    window.showReplayProgress(0, driver.total());
    logs.start(kLogPollMs);
    driver.start(speed);
    const int result = app.exec();
    return status != 0 ? status : result;
}
