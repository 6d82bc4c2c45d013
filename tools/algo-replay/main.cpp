// algo-replay: replays captured algo-server sessions through the library and
// prints the resulting model (and, on request, every signal on the way).

#include "logfilter.h"
#include "replayer.h"
#include "signalprinter.h"
#include "snapshot.h"

#include <algologic.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QTextStream>

#include <cstdio>
#include <memory>
#ifdef Q_OS_WIN
#include <io.h>
#define ALGO_REPLAY_ISATTY(stream) _isatty(_fileno(stream))
#else
#include <unistd.h>
#define ALGO_REPLAY_ISATTY(stream) isatty(fileno(stream))
#endif

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("algo-replay"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ALGOLOGIC_VERSION_STRING));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Replays captured algo-server sessions (JSON lines) through the AlgoLogic library\n"
        "and prints the resulting model. Exit status: 0, 1 with --strict when a line was\n"
        "bad, 2 when a capture could not be read."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption signalsOption(
        QStringLiteral("signals"),
        QStringLiteral("Print every signal of the managers as JSON lines."));
    const QCommandLineOption formatOption(QStringLiteral("format"),
                                          QStringLiteral("Snapshot format: table or json."),
                                          QStringLiteral("format"), QStringLiteral("table"));
    const QCommandLineOption strictOption(QStringLiteral("strict"),
                                          QStringLiteral("Exit with 1 when a line was bad."));
    const QCommandLineOption quietOption(QStringLiteral("quiet"),
                                         QStringLiteral("Print no snapshot."));
    const QCommandLineOption liveTimerOption(
        QStringLiteral("live-timer"),
        QStringLiteral("Start the 30 s profit timer (default: profit runs on tick lines only)."));
    const QCommandLineOption verboseOption(
        QStringLiteral("verbose"),
        QStringLiteral("Show the library's debug and info log lines on stderr."));
    parser.addOptions(
        {signalsOption, formatOption, strictOption, quietOption, liveTimerOption, verboseOption});
    parser.addPositionalArgument(QStringLiteral("CAPTURE"),
                                 QStringLiteral("Capture files, in order; - reads standard input."),
                                 QStringLiteral("CAPTURE..."));
    parser.process(app);

    AlgoReplay::filterLibraryLog(parser.isSet(verboseOption));

    QTextStream out(stdout);
    QTextStream errors(stderr);
    const QString format = parser.value(formatOption);
    if (format != QLatin1String("table") && format != QLatin1String("json")) {
        errors << "algo-replay: unknown format \"" << format << "\" (table or json)\n";
        return 2;
    }
    const QStringList captures = parser.positionalArguments();
    if (captures.isEmpty()) {
        errors << "algo-replay: no capture given\n" << parser.helpText();
        return 2;
    }

    AlgoReplay::ReplayOptions options;
    options.liveTimer = parser.isSet(liveTimerOption);
    options.progress = ALGO_REPLAY_ISATTY(stderr) != 0;
    AlgoReplay::Replayer replayer(options, errors);
    std::unique_ptr<AlgoReplay::SignalPrinter> printer;
    if (parser.isSet(signalsOption))
        printer = std::make_unique<AlgoReplay::SignalPrinter>(out);

    for (const QString& capture : captures)
        replayer.replayFile(capture);
    printer.reset();

    if (!parser.isSet(quietOption)) {
        const QJsonObject snapshot = AlgoReplay::snapshot(replayer.instanceIds());
        if (format == QLatin1String("json"))
            out << QJsonDocument(snapshot).toJson(QJsonDocument::Indented);
        else
            out << AlgoReplay::formatTable(snapshot.value(QStringLiteral("instances")).toArray());
        out.flush();
    }

    if (replayer.stats().unreadable)
        return 2;
    if (parser.isSet(strictOption) && replayer.stats().badLines > 0)
        return 1;
    return 0;
}
