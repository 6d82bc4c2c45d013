// The item models over the registry: consistent while captures replay, the rows each
// notification and each kind of push updates (and only those), one read per burst, and
// in step with the registry while another thread routes traffic.

#include <algologic.h>

#include "logcapture.h"
#include "replayer.h"

#include <QAbstractItemModelTester>
#include <QtTest>

#include <atomic>
#include <thread>

namespace {

using Tester = QAbstractItemModelTester;
const auto kQtTest = Tester::FailureReportingMode::QtTest;
const QString kAll = Algo_Values::AlgoGlobalType::all;
const QString kCatalogue = R"({"op":"catalogue","strategies":[{"name":"AITWAP","alias":"TWAP",)"
                           R"("algoType":"Normal","underlyingProp":"1"}]})";

// Delivers the queued notifications, then the flushes they asked for.
void settle()
{
    for (int turn = 0; turn < 3; ++turn)
        QCoreApplication::processEvents();
}

// Every role of every cell with its row's key: a model fed by notifications must read
// the same as one built afresh.
QStringList cells(const SnapshotTableModel& model)
{
    QStringList out;
    for (int row = 0; row < model.rowCount(); ++row) {
        for (int column = 0; column < model.columnCount(); ++column) {
            const QModelIndex i = model.index(row, column);
            out << model.keyAt(row) + '|' + i.data().toString() + '|'
                       + i.data(SnapshotTableModel::SortRole).toString() + '|'
                       + i.data(Qt::ToolTipRole).toString();
        }
    }
    return out;
}

// The rows are the registry's answer, and both models read as ones built afresh.
void verifyInStep(const InstanceTableModel& instances, const SymbolTableModel& legs)
{
    QCOMPARE(instances.keys(), instances.queryInstanceIds());
    InstanceTableModel freshInstances(instances.algoType(), instances.allCreators());
    SymbolTableModel freshLegs;
    freshLegs.setInstanceID(legs.instanceID());
    QCOMPARE(cells(instances), cells(freshInstances));
    QCOMPARE(cells(legs), cells(freshLegs));
}

// The keys of the rows each signal names, in emission order: "+key" inserted, "-key" removed.
struct RowSpy
{
    QStringList rows, changed;
    QList<int> span; // first and last column of the first dataChanged

    explicit RowSpy(SnapshotTableModel& m)
    {
        using Index = const QModelIndex&;
        const auto keys = [this, &m](const QString& sign) {
            return [this, &m, sign](Index, int f, int l) {
                for (int r = f; r <= l; ++r)
                    rows << sign + m.keyAt(r);
            };
        };
        QObject::connect(&m, &QAbstractItemModel::rowsInserted, keys("+"));
        QObject::connect(&m, &QAbstractItemModel::rowsAboutToBeRemoved, keys("-"));
        QObject::connect(&m, &QAbstractItemModel::dataChanged, [&](Index tl, Index br) {
            for (int r = tl.row(); r <= br.row(); ++r)
                changed << m.keyAt(r);
            if (span.isEmpty())
                span << tl.column() << br.column();
        });
    }
};

// Registers (replacing) an instance running with one leg of 1000; a T0 leg has sold 100.
void addInstance(const QString& id, const QString& algoType = "Normal")
{
    const bool t0 = algoType == Algo_Values::AlgoGlobalType::T0;
    const QString symbol = t0 ? "000858.SZ" : "600000.SH", side = t0 ? kAll : "1";
    InstanceInfoBase* inst = t0 ? new T0InstanceInfo : new InstanceInfoBase;
    inst->setInstanceID(id);
    inst->setInstAlgoType(algoType);
    inst->setStrategyName("AITWAP");
    inst->setStatus("1");
    inst->setTargetQty(1000);
    SymbolInfoBase* leg = InstanceMgr::CreateSymbolInfo(algoType, symbol);
    leg->setKey(InstanceMgr::GetSymbolExtInfoKey(id, symbol, side));
    leg->setSymbol(symbol);
    leg->setOrderSide(side);
    leg->setTargetQty(1000);
    if (t0)
        static_cast<T0SymbolInfo*>(leg)->setSellDealQty(100);
    inst->AddSymbolInfo(leg);
    InstanceMgr::instance()->InsertNewInstance(inst);
}

AlgoReplay::Operation parse(const QString& line)
{
    AlgoReplay::Operation op;
    QString error;
    if (!AlgoReplay::parseOperation(line.toUtf8(), op, error))
        qFatal("%s: %s", qPrintable(line), qPrintable(error));
    return op;
}

QString gather(const QString& id, int filled)
{
    return QString(R"({"op":"progressGather","records":[{"strategyID":"%1"},)"
                   R"({"symbol":"600000.SH","side":"1","orderQty":%2,"cumQty":%2,)"
                   R"("StrategyCumAmount":%3}]})")
        .arg(id).arg(filled).arg(filled * 10);
}

QString status(const QString& id, const QString& code, const QString& legs = QString())
{
    return QString(R"({"op":"statusUpdate","instanceID":"%1","records":[)"
                   R"({"strategyStatus":"%2"}%3]})").arg(id, code, legs);
}

QString query(const QString& id, const QString& deleted)
{
    return QString(R"({"op":"query","records":[{"strategyID":"%1","strategyName":"AITWAP",)"
                   R"("strategyStatus":"1","strategyDeleted":"%2"}]})")
        .arg(id, deleted);
}

// An acknowledged modification that sets (or adds) the leg of `symbol`.
QString modify(const QString& id, const QString& symbol, int quantity)
{
    const QJsonObject leg{{"Symbol", symbol}, {"OrderSide", "1"}, {"Quantity", quantity}};
    const QJsonObject paras{{"SymbolParamKey", QJsonArray{leg}}};
    const QJsonObject record{
        {"strategyStatus", "1"},
        {"ExecAckStatus", "1"},
        {"strategyParas", QString(QJsonDocument(paras).toJson(QJsonDocument::Compact))}};
    const QJsonObject op{{"op", "modifyPush"}, {"instanceID", id}, {"records", QJsonArray{record}}};
    return QJsonDocument(op).toJson(QJsonDocument::Compact);
}

} // namespace

class TestItemModels : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void replayExamples_data();
    void replayExamples();
    void notifications_data();
    void notifications();
    void pushes_data();
    void pushes();
    void concurrentTraffic();

private:
    // A capture line, applied as algo-monitor applies it (the models refresh after the
    // operations that notify nothing); "refresh" refreshes both models and "add:ID"
    // registers an instance without any notification.
    void apply(const QString& line, InstanceTableModel& instances, SymbolTableModel& legs);

    QTextStream m_errors{stderr};
    std::unique_ptr<AlgoReplay::Replayer> m_replayer;
};

void TestItemModels::initTestCase()
{
    QLoggingCategory::setFilterRules("algologic.*.debug=false\nalgologic.models.debug=true");
    m_replayer = std::make_unique<AlgoReplay::Replayer>(AlgoReplay::ReplayOptions(), m_errors);
}

void TestItemModels::apply(const QString& line, InstanceTableModel& instances,
                           SymbolTableModel& legs)
{
    using AlgoReplay::OpKind;
    if (line == "refresh")
        return instances.refresh(), legs.refresh();
    if (line.startsWith("add:"))
        return addInstance(line.mid(4));
    const AlgoReplay::Operation op = parse(line);
    QString error;
    QVERIFY2(m_replayer->apply(op, error), qPrintable(error));
    if (QList<OpKind>{OpKind::Create, OpKind::SymbolExt, OpKind::Detail}.contains(op.kind)) {
        instances.refresh();
        legs.refresh();
    }
}

void TestItemModels::replayExamples_data()
{
    QTest::addColumn<QString>("capture");
    for (const QString& name : QDir(EXAMPLES_DIR).entryList({"*.jsonl"}))
        QTest::newRow(qPrintable(name)) << QString(EXAMPLES_DIR "/" + name);
}

void TestItemModels::replayExamples()
{
    QFETCH(QString, capture);
    InstanceTableModel instances(kAll, true);
    SymbolTableModel legs; // follows the first instance the capture names
    Tester instanceTester(&instances, kQtTest), legTester(&legs, kQtTest);
    QFile file(capture);
    QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        apply(line, instances, legs);
        const QStringList mentioned = AlgoReplay::mentionedInstanceIds(parse(line));
        if (legs.instanceID().isEmpty() && !mentioned.isEmpty())
            legs.setInstanceID(mentioned.first());
        settle();
    }
    QVERIFY(legs.rowCount() > 0);
    verifyInStep(instances, legs);
}

void TestItemModels::notifications_data()
{
    QTest::addColumn<int>("index"); // of the registry's signal
    QTest::addColumn<bool>("refreshesInstance");
    const QMetaObject& meta = InstanceMgr::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const QByteArray name = method.methodSignature();
        if (method.methodType() == QMetaMethod::Signal) // the profit timer names no instance
            QTest::newRow(name.constData()) << i << (method.parameterCount() > 0);
    }
}

void TestItemModels::notifications()
{
    QFETCH(int, index);
    QFETCH(bool, refreshesInstance);
    addInstance("pa");
    addInstance("pb");
    InstanceTableModel instances(kAll, true);
    SymbolTableModel legs;
    legs.setInstanceID("pa");
    RowSpy spy(instances), legSpy(legs);
    InstanceMgr* mgr = InstanceMgr::instance();
    for (const QString id : {"pb", "pa"}) { // what a handler would do, then its notification
        {
            InstanceInfoBase* inst = mgr->GetInstanceInfoForAllType().value(id); // registry first
            AlgoLogic::WriteLocker locker(mgr->getLocker());
            inst->setRemark(QTest::currentDataTag());
            inst->getSymbolInfo(id + "_600000.SH_1")->setTipMsg(QTest::currentDataTag());
        }
        const QMetaMethod signal = mgr->metaObject()->method(index);
        using LegMap = QMap<QString, QVariantMap>;
        const LegMap legMap{{id + "_600000.SH_1", {}}};
        QVariant args[3]; // each names `id` (a leg of it in a leg map)
        QGenericArgument a[3];
        for (int i = 0; i < signal.parameterCount(); ++i) {
            const int type = signal.parameterType(i);
            args[i] = type == QMetaType::QString       ? QVariant(id)
                    : type == QMetaType::QStringList   ? QVariant(QStringList{id})
                    : type == qMetaTypeId<LegMap>() ? QVariant::fromValue(legMap)
                                                    : QVariant(type, nullptr);
            a[i] = QGenericArgument(args[i].typeName(), args[i].constData());
        }
        QVERIFY(signal.invoke(mgr, Qt::DirectConnection, a[0], a[1], a[2]));
        settle();
    }
    const int remark = InstanceTableModel::RemarkColumn;
    QCOMPARE(spy.changed, (refreshesInstance ? QStringList{"pb", "pa"} : QStringList()));
    QCOMPARE(spy.span, (refreshesInstance ? QList<int>{remark, remark} : QList<int>()));
    QCOMPARE(legSpy.changed, QStringList{"pa_600000.SH_1"}); // not for pb
}

void TestItemModels::pushes_data()
{
    QTest::addColumn<QString>("algoType");    // of the instance model
    QTest::addColumn<QString>("legsOf");      // the instance the leg model follows
    QTest::addColumn<QStringList>("ops");     // applied in one burst
    QTest::addColumn<QStringList>("changed"); // instance rows per dataChanged
    QTest::addColumn<QStringList>("rows");    // "+key" inserted, "-key" removed
    QTest::addColumn<int>("legUpdates");      // dataChanged of the leg model
    QTest::addColumn<QStringList>("cell");    // a row key, a column, its display text
    using I = InstanceTableModel;
    using S = SymbolTableModel;
    const QStringList no;
    const QString pa = "pa", pb = "pb", pt = "pt";
    const auto at = [](const QString& key, int column, const QString& text) {
        return QStringList{key, QString::number(column), text};
    };
    QStringList flood;
    for (int filled = 10; filled <= 200; filled += 10)
        flood << gather(pa, filled);
    const QString legStatus = R"(,{"strategyStatus":"4","side":"1","symbol":"600000.SH"})";
    const QString tick = R"({"op":"tick"})", price = R"({"op":"price","symbol":"000858.SZ",)"
                                                     R"("price":150})";
    QTest::newRow("progress gather") << kAll << pa << QStringList{gather(pa, 500)}
        << QStringList{pa} << no << 1 << at(pa, I::ProgressColumn, "50.0%");
    QTest::newRow("gather changing nothing") << kAll << pa << QStringList{gather(pa, 0)} << no
        << no << 0 << no;
    QTest::newRow("flood of gathers") << kAll << pa << flood << QStringList{pa} << no << 1
        << at(pa, I::FilledColumn, "200");
    QTest::newRow("status push") << kAll << pa << QStringList{status(pb, "5")} << QStringList{pb}
        << no << 0 << at(pb, I::StatusColumn, "已停止");
    QTest::newRow("leg status push") << kAll << pa << QStringList{status(pa, "4", legStatus)}
        << QStringList{pa} << no << 1 << at("pa_600000.SH_1", S::StatusColumn, "已暂停");
    QTest::newRow("modify push adds a leg") << kAll << pa
        << QStringList{modify(pa, "600000.SH", 600), modify(pa, "601318.SH", 2000)}
        << QStringList{pa} << no << 1 << at("pa_601318.SH_1", S::TargetColumn, "2,000");
    QTest::newRow("first push of a silent instance") << kAll << pa
        << QStringList{"add:pn", gather("pn", 100)} << no << QStringList{"+pn"} << 0
        << at("pn", I::FilledColumn, "100");
    QTest::newRow("query adds an instance") << kAll << pa << QStringList{query("pn", "0")} << no
        << QStringList{"+pn"} << 0 << no;
    QTest::newRow("query marks one deleted") << kAll << pb << QStringList{query(pb, "1")} << no
        << QStringList{"-pb"} << 0 << no;
    QTest::newRow("forgotten, then refreshed") << kAll << pb
        << QStringList{R"({"op":"forget","instanceID":"pb"})", "refresh"} << no
        << QStringList{"-pb"} << 0 << no;
    QTest::newRow("profit tick") << kAll << pt << QStringList{price, tick} << no << no << 1
        << at("pt_000858.SZ_All", S::FloatingProfitColumn, "-15,000.00");
    QTest::newRow("other algo type") << Algo_Values::AlgoGlobalType::T0 << pa
        << QStringList{gather(pa, 300), status(pb, "5")} << no << no << 1 << no;
}

void TestItemModels::pushes()
{
    QFETCH(QString, algoType);
    QFETCH(QString, legsOf);
    QFETCH(QStringList, ops);
    QFETCH(QStringList, changed);
    QFETCH(QStringList, rows);
    QFETCH(int, legUpdates);
    QFETCH(QStringList, cell);
    InstanceMgr::instance()->DeleteInstance("pn");
    addInstance("pa");
    addInstance("pb");
    addInstance("pt", Algo_Values::AlgoGlobalType::T0);
    InstanceTableModel instances(algoType, true);
    SymbolTableModel legs;
    legs.setInstanceID(legsOf);
    Tester instanceTester(&instances, kQtTest), legTester(&legs, kQtTest);
    apply(kCatalogue, instances, legs);
    RowSpy spy(instances), legSpy(legs);
    LogCapture log;
    for (const QString& op : ops) // all before the event loop turns
        apply(op, instances, legs);
    settle();
    QVERIFY(log.count(QtDebugMsg, "InstanceTableModel::flush") <= 1); // one read per burst
    QVERIFY(log.count(QtDebugMsg, "SymbolTableModel::flush") <= 1);
    QCOMPARE(spy.changed, changed);
    QCOMPARE(spy.rows, rows);
    QCOMPARE(legSpy.changed.size(), legUpdates);
    verifyInStep(instances, legs);
    if (!cell.isEmpty()) {
        const SnapshotTableModel& model =
            legs.rowOfKey(cell[0]) >= 0 ? static_cast<SnapshotTableModel&>(legs) : instances;
        QCOMPARE(model.index(model.rowOfKey(cell[0]), cell[1].toInt()).data().toString(), cell[2]);
    }
}

void TestItemModels::concurrentTraffic()
{
    InstanceTableModel instances(kAll, true);
    SymbolTableModel legs;
    legs.setInstanceID("c0");
    Tester instanceTester(&instances, kQtTest), legTester(&legs, kQtTest);
    apply(kCatalogue, instances, legs);
    QList<AlgoReplay::Operation> traffic; // new instances and legs, fills, statuses, deletions
    for (int round = 0; round < 300; ++round) {
        const QString id = "c" + QString::number(round % 12);
        traffic << parse(query(id, round % 97 == 96 ? "1" : "0")) << parse(gather(id, round))
                << parse(status(id, round % 3 ? "1" : "4"));
        if (round % 50 < 12)
            traffic << parse(modify(id, QString("60%1.SH").arg(round % 7), 100000));
    }
    std::atomic<bool> started{false}, done{false};
    std::thread router([&] {
        while (!started) // until the views' side runs
            std::this_thread::yield();
        QString error;
        for (const AlgoReplay::Operation& op : qAsConst(traffic))
            m_replayer->apply(op, error);
        done = true;
    });
    do { // the views' side: notifications delivered, every cell read
        started = true;
        QCoreApplication::processEvents();
        cells(instances);
        cells(legs);
    } while (!done);
    router.join();
    settle();
    QVERIFY(!instances.keys().contains("c2") && legs.rowCount() > 1); // deleted; legs added
    verifyInStep(instances, legs);
}

QTEST_GUILESS_MAIN(TestItemModels)
#include "tst_itemmodels.moc"
