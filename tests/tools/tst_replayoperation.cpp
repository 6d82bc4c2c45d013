// Parsing of capture lines into typed operations: what is accepted, and the
// reason given for every kind of bad line.

#include "operation.h"

#include <QtTest>

using namespace AlgoReplay;

Q_DECLARE_METATYPE(AlgoReplay::OpKind)

class TestReplayOperation : public QObject
{
    Q_OBJECT
private slots:
    void validLines_data();
    void validLines();
    void badLines_data();
    void badLines();
    void membersConvertToLibraryTypes();
    void mentionedInstanceIds();
};

void TestReplayOperation::validLines_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<OpKind>("kind");

    QTest::newRow("login") << QByteArray(R"({"op":"login","account":"u1"})") << OpKind::Login;
    QTest::newRow("catalogue") << QByteArray(
        R"({"op":"catalogue","strategies":[{"name":"A",)"
        R"("alias":"a","algoType":"T0","underlyingProp":"1"}]})")
                               << OpKind::Catalogue;
    QTest::newRow("authority") << QByteArray(
        R"({"op":"authority","table":{"acc":{"c":{"A":"1"}}}})")
                               << OpKind::Authority;
    QTest::newRow("dispFactor") << QByteArray(R"({"op":"dispFactor","symbol":"S","factor":10})")
                                << OpKind::DispFactor;
    QTest::newRow("account") << QByteArray(R"({"op":"account","tradingAccount":"T",)"
                                           R"("fundAccount":"F","fundAccountName":"N"})")
                             << OpKind::Account;
    QTest::newRow("price") << QByteArray(R"({"op":"price","symbol":"S","price":9.5})")
                           << OpKind::Price;
    QTest::newRow("create without name")
        << QByteArray(R"({"op":"create","algoType":"T0","record":{}})") << OpKind::Create;
    QTest::newRow("query") << QByteArray(R"({"op":"query","records":[]})") << OpKind::Query;
    QTest::newRow("t0Report") << QByteArray(R"({"op":"t0Report","records":[{}]})")
                              << OpKind::T0Report;
    QTest::newRow("statusUpdate") << QByteArray(
        R"({"op":"statusUpdate","instanceID":"1","records":[{}]})")
                                  << OpKind::StatusUpdate;
    QTest::newRow("symbolExt") << QByteArray(
        R"({"op":"symbolExt","instanceID":"1","params":{},"records":[]})")
                               << OpKind::SymbolExt;
    QTest::newRow("detail") << QByteArray(R"({"op":"detail","instanceID":"1","record":{}})")
                            << OpKind::Detail;
    QTest::newRow("forget") << QByteArray(R"({"op":"forget","instanceID":"1"})") << OpKind::Forget;
    QTest::newRow("tick with extra member")
        << QByteArray(R"({"op":"tick","note":1})") << OpKind::Tick;
}

void TestReplayOperation::validLines()
{
    QFETCH(QByteArray, line);
    QFETCH(OpKind, kind);
    Operation op;
    QString error;
    QVERIFY2(parseOperation(line, op, error), qPrintable(error));
    QCOMPARE(op.kind, kind);
    QVERIFY(error.isEmpty());
}

void TestReplayOperation::badLines_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("reason");

    QTest::newRow("not JSON") << QByteArray("{op:login}") << "not JSON";
    QTest::newRow("array") << QByteArray("[1]") << "not a JSON object";
    QTest::newRow("no op") << QByteArray(R"({"account":"u"})") << "missing member \"op\"";
    QTest::newRow("op not text") << QByteArray(R"({"op":3})") << "member \"op\" is not a text";
    QTest::newRow("unknown op") << QByteArray(R"({"op":"fly"})") << "unknown op \"fly\"";
    QTest::newRow("missing member")
        << QByteArray(R"({"op":"login"})") << "missing member \"account\"";
    QTest::newRow("text expected")
        << QByteArray(R"({"op":"login","account":5})") << "member \"account\" is not a text";
    QTest::newRow("number expected") << QByteArray(R"({"op":"price","symbol":"S","price":"9"})")
                                     << "member \"price\" is not a number";
    QTest::newRow("records not array")
        << QByteArray(R"({"op":"query","records":{}})") << "member \"records\" is not an array";
    QTest::newRow("record not object")
        << QByteArray(R"({"op":"query","records":[1]})") << "not an object";
    QTest::newRow("record object expected")
        << QByteArray(R"({"op":"detail","instanceID":"1","record":[]})")
        << "member \"record\" is not an object";
    QTest::newRow("strategy without name")
        << QByteArray(R"({"op":"catalogue","strategies":[{"alias":"a","algoType":"",)"
                      R"("underlyingProp":""}]})")
        << "missing member \"name\"";
    QTest::newRow("authority node not text")
        << QByteArray(R"({"op":"authority","table":{"acc":{"c":{"A":1}}}})")
        << "member \"table\" is not";
}

void TestReplayOperation::badLines()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, reason);
    Operation op;
    QString error;
    QVERIFY(!parseOperation(line, op, error));
    QVERIFY2(error.contains(reason), qPrintable(error));
}

void TestReplayOperation::membersConvertToLibraryTypes()
{
    Operation op;
    QString error;
    QVERIFY(parseOperation(R"({"op":"catalogue","strategies":[{"name":"A","alias":"a",)"
                           R"("algoType":"T0","underlyingProp":"1","reportFormat":"ui"}]})",
                           op, error));
    QCOMPARE(op.strategies.size(), 1);
    QCOMPARE(op.strategies.first().reportFormat(), QStringLiteral("ui"));

    QVERIFY(parseOperation(R"({"op":"query","records":[{"strategyID":"7","n":2,)"
                           R"("nested":{"a":[1,"x"]}}]})",
                           op, error));
    const VariantMap record = op.records.first();
    QCOMPARE(record.value(QStringLiteral("n")).toDouble(), 2.0);
    QCOMPARE(
        record.value(QStringLiteral("nested")).toMap().value(QStringLiteral("a")).toList().size(),
        2);

    QVERIFY(parseOperation(R"({"op":"authority","table":{"acc":{"c":{"A":"node"}}}})", op, error));
    QCOMPARE(
        op.table.value(QStringLiteral("acc")).value(QStringLiteral("c")).value(QStringLiteral("A")),
        QStringLiteral("node"));
}

void TestReplayOperation::mentionedInstanceIds()
{
    Operation op;
    QString error;
    QVERIFY(parseOperation(R"({"op":"statusUpdate","instanceID":"1",)"
                           R"("records":[{"strategyID":"2"},{"x":1}]})",
                           op, error));
    QCOMPARE(AlgoReplay::mentionedInstanceIds(op),
             QStringList({QStringLiteral("1"), QStringLiteral("2")}));
    QVERIFY(
        parseOperation(R"({"op":"create","algoType":"","record":{"strategyID":"9"}})", op, error));
    QCOMPARE(AlgoReplay::mentionedInstanceIds(op), QStringList{QStringLiteral("9")});
}

QTEST_GUILESS_MAIN(TestReplayOperation)
#include "tst_replayoperation.moc"
