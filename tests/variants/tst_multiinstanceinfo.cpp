// The multi-strategy (basis / pair) instance: the update-counter guard, the
// two progress feeds (detail metadata and the push batch), the plan read by
// initialisation and parameter refresh, the modify push, and copies.

#include <algologic.h>

#include "logcapture.h"

#include <QtTest>

namespace P = Multi_Fields::MultiInstProgressFields;
namespace Detail = Multi_Fields::MulitStrDetailInfo;
namespace Helm = Algo_Fields::HelmStrategy;
namespace Strategy = Tessel_Fields::Strategy;
using Calls = QList<QList<QVariant>>;

// Snapshot n with counter cnt: filled n*100 (running data), exec status "e<n>".
static QJsonDocument snapshot(int cnt, int n, bool array, qint64 time = 0, bool running = true)
{
    QJsonObject top{{P::UpdateCnt, cnt}, {"策略状态", QString("e%1").arg(n)}, {"更新时间", time}};
    top.insert(running ? P::RunningData : "other", QJsonObject{{P::FilledQty, n * 100}});
    return array ? QJsonDocument(QJsonArray{top}) : QJsonDocument(top);
}
// The detail form (an array) and the push form (one object with an update time).
static QString a(int cnt, int n, bool r = true)
{
    return snapshot(cnt, n, true, 0, r).toJson();
}
static QString o(int cnt, int n, qint64 time)
{
    return snapshot(cnt, n, false, time).toJson();
}

// "counter filled exec lamenessFlag"
static QString probe(const MultiInstanceInfo& m)
{
    return QString("%1 %2 %3 %4")
        .arg(m.getMultiUpdateCnt())
        .arg(m.getMultiFilledQty(), m.getMultiExecStatus())
        .arg(int(m.getMultiLamenessFlag()));
}

class TestMultiInstanceInfo : public QObject
{
    Q_OBJECT

private slots:
    void updateCounterGuard()
    {
        MultiInstanceInfo m; // an equal counter is taken, a smaller one refused
        QVERIFY(m.setMultiUpdateCnt(7) && m.setMultiUpdateCnt(7) && !m.setMultiUpdateCnt(5));
        QCOMPARE(m.getMultiUpdateCnt(), 7);
    }

    // Each row after a detail record whose metadata applied snapshot 9 (counter
    // 1). `results`: what each detail text returned, then the signalled IDs.
    void progressFeeds_data()
    {
        QTest::addColumn<int>("feed"); // 0 detail, 1 push, 2 push through the one-argument form
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QString>("expected"); // probe() afterwards
        QTest::addColumn<QString>("results");
        QTest::addColumn<QString>("logged"); // a warning for "解析失败", else a debug line
        QTest::newRow("detail: stale counter ignored, equal one applied without running data")
            << 0 << QStringList{a(7, 1), a(5, 2), a(7, 3, false)} << "7  e3 1"
            << "m1||m1"
            << "";
        QTest::newRow("detail empty array") << 0 << QStringList{"[]"} << "1 900 e9 1"
                                            << ""
                                            << "fillMultiProgressReport 解析失败：[]";
        QTest::newRow("detail bad JSON")
            << 0 << QStringList{"[{"} << "1 900 e9 1"
            << ""
            << "fillMultiProgressReport json error: progress json:  [{";
        QTest::newRow("push older time")
            << 1 << QStringList{o(2, 1, 2), o(3, 2, 1), o(4, 3, 3)} << "2 100 e1 1"
            << ""
            << "m1 new timestamp: 1 smaller than old timestamp: 2";
        QTest::newRow("push counters 3, 3, 4")
            << 1 << QStringList{o(3, 1, 1), o(3, 2, 2), o(4, 3, 2)} << "4 300 e3 1"
            << "m1"
            << "";
        QTest::newRow("push stale counter")
            << 1 << QStringList{o(5, 1, 1), o(4, 2, 2), o(6, 3, 3)} << "5 100 e1 1"
            << ""
            << "";
        QTest::newRow("push bad JSON")
            << 1 << QStringList{o(2, 1, 1), "{bad", o(3, 2, 2)} << "2 100 e1 1"
            << ""
            << "OnRecvInstProgressInfo json error: progress json:  {bad";
        QTest::newRow("push empty batch") << 1 << QStringList{} << "1 900 e9 1"
                                          << "m1"
                                          << "";
        QTest::newRow("push one-argument form") << 2 << QStringList{o(2, 2, 5)} << "2 200 e2 0"
                                                << "m1"
                                                << "";
    }
    void progressFeeds()
    {
        QFETCH(int, feed);
        QFETCH(QStringList, texts);
        QFETCH(QString, logged);
        MultiInstanceInfo m;
        m.setInstanceID("m1");
        m.OnRect_QueryAlgoStrategyResponse_Detail({{Helm::Metadata, a(1, 9)}});
        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalMultiProgressUpdated);
        LogCapture log;
        QStringList seen;
        QMap<QString, QList<QString>> out;
        for (const QString& text : feed == 0 ? texts : QStringList())
            seen << m.fillMultiProgressReport(text);
        if (feed > 0)
            feed == 1 ? m.OnRecvInstProgressInfo(texts, true, out)
                      : m.OnRecvInstProgressInfo(texts);
        for (const QList<QVariant>& arguments : qAsConst(spy))
            seen << arguments.first().toString();
        QTEST(seen.join('|'), "results");
        QTEST(probe(m), "expected");
        const QtMsgType level = logged.contains("解析失败") ? QtWarningMsg : QtDebugMsg;
        QVERIFY(logged.isEmpty() || log.contains(level, logged));
    }

    // Initialisation, then a parameter refresh with the same content, over side
    // "-" and comparison "?". Expected: side|effect|compare|accounts|valid times.
    void plan_data()
    {
        QTest::addColumn<VariantMap>("content");
        QTest::addColumn<QString>("plan");
        namespace B = Multi_Fields::MulitStrBasis;
        namespace PE = Tessel_Values::PositionEffect;
        const auto basis = [](const QString& type) {
            const VariantMap b{{B::BasisType, type}, {B::BasisCompare, "<"}};
            return VariantMap{{Detail::Basis, QVariantList{b}}};
        };
        QTest::newRow("forward open") << basis(B::ForwardOpen) << "Buy|" + PE::open + "|<||";
        QTest::newRow("forward close") << basis(B::ForwardClose) << "Buy|" + PE::close + "|<||";
        QTest::newRow("reverse open") << basis(B::ReverseOpen) << "Sell|" + PE::open + "|<||";
        QTest::newRow("reverse close") << basis(B::ReverseClose) << "Sell|" + PE::close + "|<||";
        QTest::newRow("unknown type unchanged") << basis("Sideways") << "-||<||";
        namespace T = Multi_Fields::MulitTableInfo;
        const auto acc = [](const char* id) { return VariantMap{{T::TradingAccount, id}}; };
        const VariantMap listA{{"legs", QVariantList{acc("b")}}};
        const VariantMap listB{{"legs", QVariantList{acc(""), acc("A")}}};
        QTest::newRow("accounts distinct over table and lists, comparison kept")
            << VariantMap{{Detail::StrategyID, QVariantList{acc("a"), acc("a"), acc("b")}},
                          {Detail::SymbolListA, listA},
                          {Detail::SymbolListB, listB}}
            << "-||?|a,b,A|";
        namespace E = Multi_Fields::MulitEffectTime;
        const VariantMap am{{E::EffectTimeStart, "09:30:00"}, {E::EffectTimeEnd, "11:30:00"}};
        const VariantMap pm{{E::EffectTimeStart, "13:00:00"}, {E::EffectTimeEnd, "14:57:00"}};
        QTest::newRow("single range")
            << VariantMap{{Detail::EffectTime, am}} << "-||?||09:30:00-11:30:00";
        QTest::newRow("range list") << VariantMap{{Detail::EffectTime, QVariantList{am, pm}}}
                                    << "-||?||09:30:00-11:30:00,13:00:00-14:57:00";
    }
    void plan()
    {
        QFETCH(VariantMap, content);
        MultiInstanceInfo m;
        m.setMultiTradeSide("-");
        m.setMultiBasisCompare("?");
        m.initSymbolInfo(content, {});
        m.setParams(QJsonDocument::fromVariant(content).toJson());
        const QStringList plan{m.getMultiTradeSide(), m.getMultiOpenOrClose(),
                               m.getMultiBasisCompare(), m.getMultiTradingAccountLst().join(','),
                               m.getMultiValidTime().join(',')};
        QTEST(plan.join('|'), "plan");
    }

    // Pushes in turn, each over the state the one before left: parameters, status,
    // remark, alias, start time, comments, target, leg (keyed by the instance-level side).
    void modifyPush()
    {
        HelmBusinessDataInterface::SetDispFactor("600000", 10);
        MultiInstanceInfo m;
        m.setInstanceID("m1");
        m.setInstanceComments("c0");
        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalModifyPush);
        const auto push = [&m](const QString& ack, const QString& params) {
            m.OnRecv_InstModifyPush({{{Helm::ExecAckStatus, ack},
                                      {Strategy::strategyStatus, "1"},
                                      {Strategy::strategyParas, params},
                                      {Helm::StrategyAlterComment, "alter"},
                                      {Strategy::StrategyInstanceAlias, "alias2"},
                                      {Helm::AlgStartTime, "20240105-09:30:00"}}});
            auto* sym = m.getSymbolInfo(InstanceMgr::GetSymbolExtInfoKey("m1", "600000", "Buy"));
            return QStringList{m.params(),
                               m.status(),
                               m.remark(),
                               m.instanceAlias(),
                               m.startTime().toString("yyyyMMdd-hh:mm"),
                               m.getInstanceComments(),
                               QString::number(m.targetQty()),
                               sym ? sym->limitPrice() : "-"}
                .join('|');
        };
        const QString full =
            R"({"OrderSide":"Buy","comment":"new","SymbolParamKey":[{"Symbol":)"
            R"("600000","OrderSide":"Sell","PriceLimits":"10.5","Quantity":100}]})";
        QCOMPARE(push("0", full), QStringLiteral("|||||c0|0|-"));             // not acknowledged
        QCOMPARE(push("1", "{broken"), QStringLiteral("{broken|||||c0|0|-")); // no signal
        QCOMPARE(push("1", full), full + "|1|alter|alias2|20240105-09:30|new|1000|10.5");
        QCOMPARE(Calls(spy), (Calls{{"m1", "0", "alter"}, {"m1", "1", "alter"}}));
    }

    void registryTagAndCopies()
    {
        std::unique_ptr<InstanceInfoBase> created(InstanceMgr::instance()->CreateInstance(
            Algo_Values::AlgoGlobalType::multiStr, VariantMap(), QStringLiteral("Pair")));
        QCOMPARE(created->getClassType(), QStringLiteral("Multi"));
        auto& source = dynamic_cast<MultiInstanceInfo&>(*created);
        source.fillMultiProgressReport(a(8, 1));
        source.AddSymbolInfo(new SymbolInfoBase);
        MultiInstanceInfo constructed(source), assigned;
        assigned = source;
        for (MultiInstanceInfo* copy : {&constructed, &assigned}) {
            QCOMPARE(probe(*copy), QStringLiteral("8 100 e1 1"));
            QVERIFY(copy->getSymbolInfo("") && copy->getSymbolInfo("") != source.getSymbolInfo(""));
            copy->fillMultiProgressReport(a(9, 2)); // must not reach the source
        }
        QCOMPARE(probe(source), QStringLiteral("8 100 e1 1"));
    }
};

QTEST_GUILESS_MAIN(TestMultiInstanceInfo)
#include "tst_multiinstanceinfo.moc"
