// algo-replay end to end: the bundled example sessions replayed through the
// real library (golden fields of the JSON snapshot and the signal stream, and
// captures run in order), and the host's handling of bad lines, unreadable
// files and its options.

#include "../common/tabletest.h"

namespace {

struct Run
{
    int exitCode = -1;
    QByteArray out;
    QString err;
};

Run replay(const QStringList& args, const QByteArray& input = QByteArray())
{
    QProcess process;
    process.start(QStringLiteral(ALGO_REPLAY_PATH), args);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(60000);
    return {process.exitCode(), process.readAllStandardOutput(),
            QString::fromUtf8(process.readAllStandardError())};
}

QString example(const QString& session)
{
    return QStringLiteral(EXAMPLES_DIR "/") + session + ".jsonl";
}

// The JSON snapshot of a session ("NAME[+LINE]": the example, then LINE from standard input)
// plus "signals": each signal's argument lists in order.
QJsonObject replayed(const QString& session)
{
    static QHash<QString, QJsonObject> cache;
    const QStringList args{example(session.section('+', 0, 0)), "-"};
    const QByteArray input = session.section('+', 1).toUtf8();
    if (!cache.contains(session)) {
        QJsonObject root =
            QJsonDocument::fromJson(replay(QStringList{"--format", "json"} + args, input).out)
                .object();
        QJsonObject signalArgs;
        for (const QByteArray& line :
             replay(QStringList{"--signals", "--quiet"} + args, input).out.split('\n')) {
            const QJsonObject o = QJsonDocument::fromJson(line).object();
            QJsonArray list = signalArgs.value(o.value("signal").toString()).toArray();
            list.append(o.value("args"));
            signalArgs.insert(o.value("signal").toString(), list);
        }
        root.insert("signals", signalArgs);
        cache.insert(session, root);
    }
    return cache.value(session);
}

// The value at `path`: object keys, array indexes, instance IDs in an array of instances, "*"
// for every element, "#" for the number of elements, "keys" for an object's keys. Numbers
// with 12 significant digits, lists joined by ",".
QString lookUp(const QJsonValue& v, const QStringList& path)
{
    const QString part = path.value(0);
    const QJsonArray array = v.toArray();
    if (path.isEmpty() || part == "*") {
        QStringList all;
        for (const QJsonValue& e : array)
            all << lookUp(e, path.mid(1));
        return !path.isEmpty() || v.isArray() ? all.join(',')
               : v.isDouble()                 ? QString::number(v.toDouble(), 'g', 12)
               : v.isBool()                   ? QString(v.toBool() ? "true" : "false")
                                              : v.toString();
    }
    if (part == "#")
        return QString::number(v.isArray() ? array.size() : v.toObject().size());
    if (part == "keys")
        return v.toObject().keys().join(',');
    bool index = false;
    const int i = part.toInt(&index);
    QJsonValue next = v.isArray() && index ? array.at(i) : v.toObject().value(part);
    for (const QJsonValue& e : array)
        next = e.toObject().value("instanceID") == part ? e : next;
    return lookUp(next, path.mid(1));
}

} // namespace

class TestReplaySessions : public QObject
{
    Q_OBJECT
private slots:
    void golden_data();
    void golden();
    void hostHandling_data();
    void hostHandling();
};

void TestReplaySessions::golden_data()
{
    // "session path | value"; "@MS" is the local time of day of MS since the epoch. The last
    // row's instance finds its single-security algo in the catalogue replayed before it.
    TableTest::addRows(R"(
twap-morning instances/*/instanceID | 100101,100102,100103
twap-morning instances/100101/status | 2
twap-morning instances/100101/filledQty, the late lower packet refused | 60000
twap-morning instances/100101/finalProgress | true
twap-morning instances/100101/instanceComments | morning book
twap-morning instances/100101/endTime | 2026-11-20T11:30:00
twap-morning instances/100101/fundAccount_Inst | F880001
twap-morning instances/100101/legs/0/key | 100101_600000.SH_1
twap-morning instances/100101/legs/0/clParentID | P100101
twap-morning instances/100101/legs/0/fundAccountName | Alpha Fund
twap-morning instances/100102/status | 5
twap-morning instances/100103/targetQty | 25000
twap-morning instances/100103/legs/0/filledQty | 9000
twap-morning instances/100103/legs/0/limitPrice | 48.50
twap-morning instances/100103/legs/0/entrustTime | @1763605795000
twap-morning logs/console/100101/# | 1
twap-morning logs/messages/keys | 100103
twap-morning logs/tradeMessages/0/ReportTime | 20261120-09:41:05
twap-morning logs/tradeMessages/1/symbol | 600000.SH
twap-morning signals/signalStatusUpdated/# | 2
twap-morning signals/signalTradeMsgUpdated/# | 2
twap-morning signals/signalProgreeDelayUpadaete/# | 8
twap-morning signals/signalModifyPush/0 | 100103,1,quantity raised to 25000
t0-day instances/200201/classType | T0
t0-day instances/200201/t0StartTime | 09:30:00
t0-day instances/200201/occupyAmount | 2500000
t0-day instances/200201/legs/1/key | 200201_600519.SH_All
t0-day instances/200201/legs/1/buyDealQty | 300
t0-day instances/200201/legs/1/profitAmount, flat: sold 516300 - bought 513900 - fees 51.39 and 51.63 | 2296.98
t0-day instances/200201/legs/1/fundAccount | F880002
t0-day logs/progress/200201/0 | {"AchieveProfit":1541.64,"Symbol":"000858.SZ"}
basis-trade instances/300301/multiUpdateCnt | 4
basis-trade instances/300301/multiLamenessState | true
basis-trade instances/300301/multiTradeSide | Buy
basis-trade instances/300301/multiOpenOrClose | Open
basis-trade instances/300301/multiValidTime | 09:30:00-11:30:00,13:00:00-14:57:00
basis-trade instances/300301/multiTradingAccountLst | 880003,990003
basis-trade instances/300301/multiTargetQty | 20
basis-trade instances/300301/targetQty, futures scaled by 300 | 3300
basis-trade instances/300301/remark | single order 20
basis-trade logs/diffs/300301 | SingleOrderQty: 10 -> 20
twap-morning+{"op":"create","algoType":"Normal","record":{"strategyID":"9","strategyName":"AITWAP"}} instances/9/instMode, the catalogue read first | single
)");
}

void TestReplaySessions::golden()
{
    const std::array<QString, 1> c = TableTest::cells<1>();
    QString value = c[0];
    const QString tag = QString(QTest::currentDataTag()).section(", ", 0, 0);
    if (value.startsWith('@'))
        value = QDateTime::fromMSecsSinceEpoch(value.mid(1).toLongLong()).toString("HH:mm:ss");
    QCOMPARE(lookUp(replayed(tag.section(' ', 0, 0)), tag.section(' ', 1).split('/')), value);
}

void TestReplaySessions::hostHandling_data()
{
    // Arguments, standard input ("\n" a line break), exit status, the lines reported bad.
    TableTest::addRows(R"(
bad lines reported and skipped; comments, blanks and good lines not | --quiet - | # a comment\n\n{"op":"login"\n{"op":"teleport"}\n{"op":"price","symbol":"S"}\n{"op":"query","records":"x"}\n{"op":"detail","instanceID":"nobody","record":{}}\n{"op":"tick"}\n | 0 | 3 4 5 6 7
bad line, strict | --quiet --strict - | nope | 1 | 1
clean, strict | --quiet --strict - | {"op":"tick"} | 0 |
unreadable | --quiet /nonexistent/capture.jsonl | | 2 |
unreadable beats strict | --strict /nonexistent/capture.jsonl - | nope | 2 | 1
)");
}

void TestReplaySessions::hostHandling()
{
    const std::array<QString, 4> c = TableTest::cells<4>();
    QString args = c[0], input = c[1], exitCode = c[2], badLines = c[3];
    const Run run = replay(args.split(' '), input.replace("\\n", "\n").toUtf8());
    QCOMPARE(QString::number(run.exitCode), exitCode);
    QStringList reported;
    for (const QString& line : run.err.split('\n'))
        reported << (line.startsWith("<stdin>:") ? line.section(':', 1, 1) : QString());
    reported.removeAll(QString());
    QCOMPARE(reported.join(' '), badLines);
    QVERIFY(run.out.isEmpty() || !args.contains("--quiet"));
}

QTEST_GUILESS_MAIN(TestReplaySessions)
#include "tst_replaysessions.moc"
