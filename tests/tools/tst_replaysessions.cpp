// algo-replay end to end: the bundled example sessions replayed through the
// real library (golden fields of the JSON snapshot and the signal stream),
// and the host's handling of bad lines, unreadable files and its options.

#include <QtTest>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

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
    if (!input.isNull())
        process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(60000);
    return {process.exitCode(), process.readAllStandardOutput(),
            QString::fromUtf8(process.readAllStandardError())};
}

QString example(const char* name)
{
    return QStringLiteral(EXAMPLES_DIR "/") + QLatin1String(name);
}

// The snapshot of one example, instances keyed by ID.
struct Snapshot
{
    QHash<QString, QJsonObject> instances;
    QStringList order;
    QJsonObject logs;
};

Snapshot snapshotOf(const char* name)
{
    const Run run = replay({QStringLiteral("--format"), QStringLiteral("json"), example(name)});
    Snapshot snapshot;
    const QJsonObject root = QJsonDocument::fromJson(run.out).object();
    for (const QJsonValue& value : root.value(QStringLiteral("instances")).toArray()) {
        const QJsonObject inst = value.toObject();
        const QString id = inst.value(QStringLiteral("instanceID")).toString();
        snapshot.order.append(id);
        snapshot.instances.insert(id, inst);
    }
    snapshot.logs = root.value(QStringLiteral("logs")).toObject();
    return snapshot;
}

QJsonObject firstLeg(const QJsonObject& inst)
{
    return inst.value(QStringLiteral("legs")).toArray().first().toObject();
}

double number(const QJsonObject& o, const char* key)
{
    return o.value(QLatin1String(key)).toDouble();
}

QString text(const QJsonObject& o, const char* key)
{
    return o.value(QLatin1String(key)).toString();
}

} // namespace

class TestReplaySessions : public QObject
{
    Q_OBJECT
private slots:
    void morningOfOrders();
    void morningSignals();
    void t0Day();
    void basisTrade();
    void badLinesAreReportedAndSkipped();
    void exitCodes_data();
    void exitCodes();
    void capturesRunInOrderFromFilesAndStdin();
};

void TestReplaySessions::morningOfOrders()
{
    const Snapshot s = snapshotOf("twap-morning.jsonl");
    QCOMPARE(s.order, QStringList({"100101", "100102", "100103"}));

    const QJsonObject twap = s.instances.value(QStringLiteral("100101"));
    QCOMPARE(text(twap, "status"), QStringLiteral("2"));
    QCOMPARE(number(twap, "filledQty"), 60000.0); // the late, lower packet was refused
    QCOMPARE(number(twap, "progrees"), 1.0);
    QCOMPARE(twap.value(QStringLiteral("finalProgress")).toBool(), true);
    QCOMPARE(text(twap, "instanceComments"), QStringLiteral("morning book"));
    QCOMPARE(text(twap, "endTime"), QStringLiteral("2026-11-20T11:30:00"));
    QCOMPARE(text(twap, "fundAccount_Inst"), QStringLiteral("F880001"));
    const QJsonObject twapLeg = firstLeg(twap);
    QCOMPARE(text(twapLeg, "key"), QStringLiteral("100101_600000.SH_1"));
    QCOMPARE(text(twapLeg, "clParentID"), QStringLiteral("P100101"));
    QCOMPARE(text(twapLeg, "fundAccountName"), QStringLiteral("Alpha Fund"));

    const QJsonObject vwap = s.instances.value(QStringLiteral("100102"));
    QCOMPARE(text(vwap, "status"), QStringLiteral("5"));
    QCOMPARE(number(vwap, "filledQty"), 20000.0);

    const QJsonObject pov = s.instances.value(QStringLiteral("100103"));
    QCOMPARE(number(pov, "targetQty"), 25000.0);
    const QJsonObject povLeg = firstLeg(pov);
    QCOMPARE(number(povLeg, "filledQty"), 9000.0);
    QCOMPARE(text(povLeg, "limitPrice"), QStringLiteral("48.50"));
    QCOMPARE(text(povLeg, "entrustTime"),
             QDateTime::fromMSecsSinceEpoch(1763605795000).toString(QStringLiteral("HH:mm:ss")));

    const QJsonObject logs = s.logs;
    QCOMPARE(logs.value(QStringLiteral("console"))
                 .toObject()
                 .value(QStringLiteral("100101"))
                 .toArray()
                 .size(),
             1);
    QCOMPARE(logs.value(QStringLiteral("messages")).toObject().keys(), QStringList{"100103"});
    const QJsonArray trades = logs.value(QStringLiteral("tradeMessages")).toArray();
    QCOMPARE(trades.size(), 2);
    QCOMPARE(text(trades.at(0).toObject(), "ReportTime"), QStringLiteral("20261120-09:41:05"));
    QCOMPARE(text(trades.at(1).toObject(), "strategyID"), QStringLiteral("100101"));
    QCOMPARE(text(trades.at(1).toObject(), "symbol"), QStringLiteral("600000.SH"));
}

void TestReplaySessions::morningSignals()
{
    const Run run = replay(
        {QStringLiteral("--signals"), QStringLiteral("--quiet"), example("twap-morning.jsonl")});
    QCOMPARE(run.exitCode, 0);
    QHash<QString, int> counts;
    QJsonArray modifyArgs;
    for (const QByteArray& line : run.out.split('\n')) {
        if (line.isEmpty())
            continue;
        QVERIFY2(line.startsWith("{\"signal\":"), line.constData());
        const QJsonObject o = QJsonDocument::fromJson(line).object();
        const QString name = text(o, "signal");
        ++counts[name];
        if (name == QLatin1String("signalModifyPush"))
            modifyArgs = o.value(QStringLiteral("args")).toArray();
    }
    QCOMPARE(counts.value(QStringLiteral("signalStatusUpdated")), 2);
    QCOMPARE(counts.value(QStringLiteral("signalSymbolStatusUpdate")), 2);
    QCOMPARE(counts.value(QStringLiteral("signalTradeMsgUpdated")), 2);
    QCOMPARE(counts.value(QStringLiteral("signalProgreeDelayUpadaete")), 8);
    QCOMPARE(modifyArgs, QJsonArray({"100103", "1", "quantity raised to 25000"}));
}

void TestReplaySessions::t0Day()
{
    const Snapshot s = snapshotOf("t0-day.jsonl");
    const QJsonObject t0 = s.instances.value(QStringLiteral("200201"));
    QCOMPARE(text(t0, "classType"), QStringLiteral("T0"));
    QCOMPARE(text(t0, "t0StartTime"), QStringLiteral("09:30:00"));
    QCOMPARE(text(t0, "occupyAmount"), QStringLiteral("2500000"));
    QCOMPARE(t0.value(QStringLiteral("finalProgress")).toBool(), true);
    const QJsonArray legs = t0.value(QStringLiteral("legs")).toArray();
    QCOMPARE(legs.size(), 2);
    const QJsonObject moutai = legs.at(1).toObject();
    QCOMPARE(text(moutai, "key"), QStringLiteral("200201_600519.SH_All"));
    QCOMPARE(number(moutai, "buyDealQty"), 300.0);
    // Flat position: profit = sell amount - buy amount - fees.
    QCOMPARE(number(moutai, "profitAmount"), 516300.0 - 513900.0 - 51.39 - 51.63);
    QCOMPARE(text(moutai, "fundAccount"), QStringLiteral("F880002"));
    const QJsonArray progress = s.logs.value(QStringLiteral("progress"))
                                    .toObject()
                                    .value(QStringLiteral("200201"))
                                    .toArray();
    QCOMPARE(progress.size(), 2);
    QCOMPARE(progress.at(0).toString(),
             QStringLiteral("{\"AchieveProfit\":1541.64,\"Symbol\":\"000858.SZ\"}"));
}

void TestReplaySessions::basisTrade()
{
    const Snapshot s = snapshotOf("basis-trade.jsonl");
    const QJsonObject basis = s.instances.value(QStringLiteral("300301"));
    QCOMPARE(text(basis, "classType"), QStringLiteral("Multi"));
    QCOMPARE(basis.value(QStringLiteral("multiUpdateCnt")).toInt(), 4);
    QCOMPARE(basis.value(QStringLiteral("multiLamenessFlag")).toBool(), false);
    QCOMPARE(basis.value(QStringLiteral("multiLamenessState")).toBool(), true);
    QCOMPARE(text(basis, "multiTradeSide"), QStringLiteral("Buy"));
    QCOMPARE(text(basis, "multiOpenOrClose"), QStringLiteral("Open"));
    QCOMPARE(basis.value(QStringLiteral("multiValidTime")).toArray(),
             QJsonArray({"09:30:00-11:30:00", "13:00:00-14:57:00"}));
    QCOMPARE(basis.value(QStringLiteral("multiTradingAccountLst")).toArray(),
             QJsonArray({"880003", "990003"}));
    QCOMPARE(number(basis, "multiTargetQty"), 20.0);
    QCOMPARE(number(basis, "targetQty"), 10.0 * 300 + 300.0); // futures scaled by 300
    QCOMPARE(text(basis, "remark"), QStringLiteral("single order 20"));
    QCOMPARE(text(s.logs.value(QStringLiteral("diffs")).toObject(), "300301"),
             QStringLiteral("SingleOrderQty: 10 -> 20"));
}

void TestReplaySessions::badLinesAreReportedAndSkipped()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("bad.jsonl"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("# a comment\n"
               "\n"
               "{\"op\":\"login\"\n"
               "{\"op\":\"teleport\"}\n"
               "{\"op\":\"price\",\"symbol\":\"S\"}\n"
               "{\"op\":\"query\",\"records\":\"x\"}\n"
               "{\"op\":\"detail\",\"instanceID\":\"nobody\",\"record\":{}}\n"
               "{\"op\":\"tick\"}\n");
    file.close();
    const Run run = replay({QStringLiteral("--quiet"), path});
    QCOMPARE(run.exitCode, 0);
    for (int line : {3, 4, 5, 6, 7})
        QVERIFY2(run.err.contains(QStringLiteral("%1:%2: ").arg(path).arg(line)),
                 qPrintable(run.err));
    QVERIFY(!run.err.contains(QStringLiteral("%1:8:").arg(path)));
    QVERIFY(run.out.isEmpty());
}

void TestReplaySessions::exitCodes_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("exitCode");

    QTest::newRow("bad line") << QStringList{"--quiet", "-"} << QByteArray("nope\n") << 0;
    QTest::newRow("bad line, strict")
        << QStringList{"--quiet", "--strict", "-"} << QByteArray("nope\n") << 1;
    QTest::newRow("clean, strict")
        << QStringList{"--quiet", "--strict", "-"} << QByteArray("{\"op\":\"tick\"}\n") << 0;
    QTest::newRow("unreadable") << QStringList{"--quiet", "/nonexistent/capture.jsonl"}
                                << QByteArray() << 2;
    QTest::newRow("unreadable beats strict")
        << QStringList{"--strict", "/nonexistent/capture.jsonl", "-"} << QByteArray("nope\n") << 2;
}

void TestReplaySessions::exitCodes()
{
    QFETCH(QStringList, args);
    QFETCH(QByteArray, input);
    QFETCH(int, exitCode);
    QCOMPARE(replay(args, input).exitCode, exitCode);
}

void TestReplaySessions::capturesRunInOrderFromFilesAndStdin()
{
    // The catalogue comes from the file; the creation from standard input
    // after it, so the instance finds its algo in the catalogue.
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("catalogue.jsonl"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"op\":\"catalogue\",\"strategies\":[{\"name\":\"S1\",\"alias\":\"\","
               "\"algoType\":\"Normal\",\"underlyingProp\":\"2\"}]}\n");
    file.close();
    const Run run =
        replay({QStringLiteral("--format"), QStringLiteral("json"), path, QStringLiteral("-")},
               "{\"op\":\"create\",\"algoType\":\"Normal\",\"record\":"
               "{\"strategyID\":\"9\",\"strategyName\":\"S1\"}}\n");
    const QJsonArray instances =
        QJsonDocument::fromJson(run.out).object().value(QStringLiteral("instances")).toArray();
    QCOMPARE(instances.size(), 1);
    QCOMPARE(text(instances.first().toObject(), "instMode"), QStringLiteral("multi"));
}

QTEST_GUILESS_MAIN(TestReplaySessions)
#include "tst_replaysessions.moc"
