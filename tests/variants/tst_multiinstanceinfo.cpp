// The multi-strategy (basis / pair) instance: the update-counter guard of the
// two progress feeds (detail metadata and the push batch), the plan read by
// initialisation and parameter refresh, the modify push, and copies.

#include "../common/tabletest.h"

namespace {

// "CNT:N[@TIME][!]" is snapshot N with update counter CNT: filled N*100 (running data; "!"
// without it), exec status "eN", update time TIME; as an array (the detail form) unless it
// has a time (the push form). Other texts are taken as they are.
QString text(const QString& token)
{
    const QRegularExpressionMatch m =
        QRegularExpression("^(\\d+):(\\d+)(@(\\d+))?(!?)$").match(token);
    if (!m.hasMatch())
        return token;
    const int n = m.captured(2).toInt();
    QJsonObject top{{"UpdateCnt", m.captured(1).toInt()},
                    {"策略状态", "e" + m.captured(2)},
                    {"更新时间", m.captured(4).toLongLong()}};
    top.insert(m.captured(5).isEmpty() ? "RunningData" : "other",
               QJsonObject{{"FilledQty", n * 100}});
    return m.captured(3).isEmpty() ? QJsonDocument(QJsonArray{top}).toJson()
                                   : QJsonDocument(top).toJson();
}

// "counter filled exec lamenessFlag"
QString probe(const MultiInstanceInfo& m)
{
    return QString("%1 %2 %3 %4")
        .arg(m.getMultiUpdateCnt())
        .arg(m.getMultiFilledQty(), m.getMultiExecStatus())
        .arg(int(m.getMultiLamenessFlag()));
}

} // namespace

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

    // Each row after a detail record whose metadata applied snapshot 9 (counter 1). Feeds:
    // "detail" texts one by one, "push" a batch, "push1" a batch through the one-argument
    // form. Results: what each detail text returned, then the IDs signalled ("/"); logged: a
    // warning for "解析失败", else debug lines (";").
    void progressFeeds_data()
    {
        TableTest::addRows(R"(
detail: stale counter ignored, equal one applied without running data | detail | 7:1 5:2 7:3! | 7  e3 1 | m1//m1 |
detail: empty array, bad JSON | detail | [] [{ | 1 900 e9 1 | / | fillMultiProgressReport 解析失败：[]; fillMultiProgressReport json error: progress json:  [{
push: older time ends the batch | push | 2:1@2 3:2@1 4:3@3 | 2 100 e1 1 | | m1 new timestamp: 1 smaller than old timestamp: 2
push: counters 3, 3, 4 | push | 3:1@1 3:2@2 4:3@2 | 4 300 e3 1 | m1 |
push: stale counter ends the batch | push | 5:1@1 4:2@2 6:3@3 | 5 100 e1 1 | |
push: bad JSON ends the batch | push | 2:1@1 {bad 3:2@2 | 2 100 e1 1 | | OnRecvInstProgressInfo json error: progress json:  {bad
push: empty batch still signalled | push | | 1 900 e9 1 | m1 |
push: one-argument form, no lameness | push1 | 2:2@5 | 2 200 e2 0 | m1 |
)");
    }
    void progressFeeds()
    {
        const std::array<QString, 5> c = TableTest::cells<5>();
        QString feed = c[0], texts = c[1], expected = c[2], results = c[3], logged = c[4];
        MultiInstanceInfo m;
        m.setInstanceID("m1");
        m.OnRect_QueryAlgoStrategyResponse_Detail({{"Metadata", text("1:9")}});
        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalMultiProgressUpdated);
        LogCapture log;
        QStringList batch, seen;
        for (const QString& token : texts.split(' ', Qt::SkipEmptyParts))
            batch << text(token);
        QMap<QString, QList<QString>> out;
        if (feed == "detail")
            for (const QString& t : batch)
                seen << m.fillMultiProgressReport(t);
        if (feed == "push")
            m.OnRecvInstProgressInfo(batch, true, out);
        if (feed == "push1")
            m.OnRecvInstProgressInfo(batch);
        for (const QList<QVariant>& arguments : qAsConst(spy))
            seen << arguments.first().toString();
        QCOMPARE(seen.join('/'), results);
        QCOMPARE(probe(m), expected);
        for (const QString& line : logged.split("; ", Qt::SkipEmptyParts))
            QVERIFY2(log.contains(line.contains("解析失败") ? QtWarningMsg : QtDebugMsg, line),
                     qPrintable(line));
    }

    // Initialisation, then a parameter refresh with the same content, over side "-" and
    // comparison "?". Plan: side/effect/compare/accounts/valid times.
    void plan_data()
    {
        TableTest::addRows(R"(
forward open | {"Basis":[{"BasisType":"ForwardOpen","BasisCompare":"<"}]} | Buy/Open/<//
forward close | {"Basis":[{"BasisType":"ForwardClose","BasisCompare":"<"}]} | Buy/Close/<//
reverse open | {"Basis":[{"BasisType":"ReverseOpen","BasisCompare":"<"}]} | Sell/Open/<//
reverse close | {"Basis":[{"BasisType":"ReverseClose","BasisCompare":"<"}]} | Sell/Close/<//
unknown type unchanged | {"Basis":[{"BasisType":"Sideways","BasisCompare":"<"}]} | -//<//
accounts distinct over table and lists, comparison kept | {"StrategyID":[{"TradingAccount":"a"},{"TradingAccount":"a"},{"TradingAccount":"b"}],"SymbolListA":{"legs":[{"TradingAccount":"b"}]},"SymbolListB":{"legs":[{"TradingAccount":""},{"TradingAccount":"A"}]}} | -//?/a,b,A/
single range | {"EffectTime":{"EffectTimeStart":"09:30:00","EffectTimeEnd":"11:30:00"}} | -//?//09:30:00-11:30:00
range list | {"EffectTime":[{"EffectTimeStart":"09:30:00","EffectTimeEnd":"11:30:00"},{"EffectTimeStart":"13:00:00","EffectTimeEnd":"14:57:00"}]} | -//?//09:30:00-11:30:00,13:00:00-14:57:00
)");
    }
    void plan()
    {
        const std::array<QString, 2> c = TableTest::cells<2>();
        QString content = c[0], plan = c[1];
        MultiInstanceInfo m;
        m.setMultiTradeSide("-");
        m.setMultiBasisCompare("?");
        m.initSymbolInfo(TableTest::record(content), {});
        m.setParams(content);
        QCOMPARE((QStringList() << m.getMultiTradeSide() << m.getMultiOpenOrClose()
                                << m.getMultiBasisCompare()
                                << m.getMultiTradingAccountLst().join(',')
                                << m.getMultiValidTime().join(','))
                     .join('/'),
                 plan);
    }

    // An unacknowledged push, then an acknowledged one: parameters, status, remark, alias,
    // start time, comments, target (display factor 10), the leg keyed by the instance-level
    // side. A broken parameter text: tst_badinput.
    void modifyPush()
    {
        HelmBusinessDataInterface::SetDispFactor("600000", 10);
        MultiInstanceInfo m;
        m.setInstanceID("m1");
        m.setInstanceComments("c0");
        QSignalSpy spy(InstanceMgr::instance(), &InstanceMgr::signalModifyPush);
        const auto push = [&m](const QString& ack, const QString& params) {
            VariantMap record = TableTest::record(
                R"({"strategyStatus":"1","StrategyAlterComment":"alter","StrategyInstanceAlias":)"
                R"("alias2","AlgStartTime":"20240105-09:30:00"})");
            record.insert("ExecAckStatus", ack), record.insert("strategyParas", params);
            m.OnRecv_InstModifyPush({record});
            const SymbolInfoBase* leg = m.getSymbolInfo("m1_600000_Buy");
            return (QStringList() << m.params() << m.status() << m.remark() << m.instanceAlias()
                                  << m.startTime().toString("yyyyMMdd-hh:mm")
                                  << m.getInstanceComments() << QString::number(m.targetQty())
                                  << (leg ? leg->limitPrice() : "-"))
                .join('|');
        };
        const QString full =
            R"({"OrderSide":"Buy","comment":"new","SymbolParamKey":[{"Symbol":)"
            R"("600000","OrderSide":"Sell","PriceLimits":"10.5","Quantity":100}]})";
        QCOMPARE(push("0", full), QStringLiteral("|||||c0|0|-"));
        QCOMPARE(push("1", full), full + "|1|alter|alias2|20240105-09:30|new|1000|10.5");
        using Calls = QList<QList<QVariant>>;
        QCOMPARE(Calls(spy), (Calls{{"m1", "0", "alter"}, {"m1", "1", "alter"}}));
    }

    void copiesAreIndependent()
    {
        MultiInstanceInfo source;
        source.fillMultiProgressReport(text("8:1"));
        source.AddSymbolInfo(new SymbolInfoBase);
        MultiInstanceInfo constructed(source), assigned;
        assigned = source;
        for (MultiInstanceInfo* copy : {&constructed, &assigned}) {
            QCOMPARE(probe(*copy), QStringLiteral("8 100 e1 1"));
            QVERIFY(copy->getSymbolInfo("") && copy->getSymbolInfo("") != source.getSymbolInfo(""));
            copy->fillMultiProgressReport(text("9:2")); // must not reach the source
        }
        QCOMPARE(probe(source), QStringLiteral("8 100 e1 1"));
    }
};

QTEST_GUILESS_MAIN(TestMultiInstanceInfo)
#include "tst_multiinstanceinfo.moc"
