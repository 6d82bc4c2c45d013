#include "snapshot.h"
#include "common/locking.h"

#include "jsonconvert.h"

#include <algologic.h>

#include <QStringList>
#include <QTextStream>

#include <algorithm>
#include <cmath>

namespace AlgoReplay {

namespace {

QJsonValue time(const QDateTime& value)
{
    return value.isValid() ? value.toString(Qt::ISODate) : QString();
}

QJsonArray list(const QStringList& values)
{
    return QJsonArray::fromStringList(values);
}

void addT0Leg(QJsonObject& o, const T0SymbolInfo& leg)
{
    o.insert(QStringLiteral("buyType"), leg.buyType());
    o.insert(QStringLiteral("sellType"), leg.sellType());
    o.insert(QStringLiteral("comment"), leg.comment());
    o.insert(QStringLiteral("endDate"), leg.endDate());
    o.insert(QStringLiteral("buyOrderQty"), toJson(leg.buyOrderQty()));
    o.insert(QStringLiteral("buyDealQty"), toJson(leg.buyDealQty()));
    o.insert(QStringLiteral("buyCloseQty"), toJson(leg.buyCloseQty()));
    o.insert(QStringLiteral("buyAvgPrice"), toJson(leg.buyAvgPrice()));
    o.insert(QStringLiteral("buyAmount"), toJson(leg.buyAmount()));
    o.insert(QStringLiteral("buyCancelQty"), toJson(leg.buyCancelQty()));
    o.insert(QStringLiteral("sellOrderQty"), toJson(leg.sellOrderQty()));
    o.insert(QStringLiteral("sellDealQty"), toJson(leg.sellDealQty()));
    o.insert(QStringLiteral("sellCloseQty"), toJson(leg.sellCloseQty()));
    o.insert(QStringLiteral("sellAvgPrice"), toJson(leg.sellAvgPrice()));
    o.insert(QStringLiteral("sellAmount"), toJson(leg.sellAmount()));
    o.insert(QStringLiteral("sellCancelQty"), toJson(leg.sellCancelQty()));
    o.insert(QStringLiteral("profitAmount"), toJson(leg.profitAmount()));
    o.insert(QStringLiteral("achieveProfit"), toJson(leg.achieveProfit()));
    o.insert(QStringLiteral("buyFee"), toJson(leg.buyFee()));
    o.insert(QStringLiteral("sellFee"), toJson(leg.sellFee()));
}

void addT0Fields(QJsonObject& o, const T0InstanceInfo& t0)
{
    o.insert(QStringLiteral("t0StartTime"), t0.getT0StartTime());
    o.insert(QStringLiteral("t0EndTime"), t0.getT0EndTime());
    o.insert(QStringLiteral("occupyAmount"), t0.getOccupyAmount());
}

void addMultiFields(QJsonObject& o, const MultiInstanceInfo& m)
{
    o.insert(QStringLiteral("multiExecStatus"), m.getMultiExecStatus());
    o.insert(QStringLiteral("multiTradeStatus"), m.getMultiTradeStatus());
    o.insert(QStringLiteral("multiOpenOrClose"), m.getMultiOpenOrClose());
    o.insert(QStringLiteral("multiTradeSide"), m.getMultiTradeSide());
    o.insert(QStringLiteral("multiRatio"), m.getMultiRatio());
    o.insert(QStringLiteral("multiOrderQty"), m.getMultiOrderQty());
    o.insert(QStringLiteral("multiFilledQty"), m.getMultiFilledQty());
    o.insert(QStringLiteral("multiProgress"), m.getMultiProgress());
    o.insert(QStringLiteral("multiBatch"), toJson(m.getMultiBatch()));
    o.insert(QStringLiteral("multiOpenQty"), m.getMultiOpenQty());
    o.insert(QStringLiteral("multiLamenessRate"), m.getMultiLamenessRate());
    o.insert(QStringLiteral("multiLamenessState"), m.getMultiLamenessState());
    o.insert(QStringLiteral("multiLamenessFlag"), m.getMultiLamenessFlag());
    o.insert(QStringLiteral("multiUpdateCnt"), m.getMultiUpdateCnt());
    o.insert(QStringLiteral("multiTargetQty"), toJson(m.getMultiTargetQty()));
    o.insert(QStringLiteral("multiTotalQty"), toJson(m.getMultiTotalQty()));
    o.insert(QStringLiteral("multiRealBasis"), toJson(m.getMultiRealBasis()));
    o.insert(QStringLiteral("multiExpectBasis"), toJson(m.getMultiExpectBasis()));
    o.insert(QStringLiteral("multiBasisCompare"), m.getMultiBasisCompare());
    o.insert(QStringLiteral("multiValidTime"), list(m.getMultiValidTime()));
    o.insert(QStringLiteral("multiTradingAccountLst"), list(m.getMultiTradingAccountLst()));
}

} // namespace

QJsonObject legToJson(const SymbolInfoBase& leg)
{
    QJsonObject o{
        {QStringLiteral("key"), leg.getKey()},
        {QStringLiteral("symbol"), leg.symbol()},
        {QStringLiteral("exchange"), leg.exchange()},
        {QStringLiteral("orderSide"), leg.orderSide()},
        {QStringLiteral("entrustProp"), leg.entrustProp()},
        {QStringLiteral("targetQty"), toJson(leg.targetQty())},
        {QStringLiteral("filledQty"), toJson(leg.filledQty())},
        {QStringLiteral("progress"), toJson(leg.progress())},
        {QStringLiteral("limitPrice"), leg.limitPrice()},
        {QStringLiteral("instanceID"), leg.instanceID()},
        {QStringLiteral("entrustQty"), toJson(leg.entrustQty())},
        {QStringLiteral("entrustProgress"), toJson(leg.entrustProgress())},
        {QStringLiteral("dealAvgPrice"), toJson(leg.dealAvgPrice())},
        {QStringLiteral("dealBalance"), toJson(leg.dealBalance())},
        {QStringLiteral("minEntrustProgress"), toJson(leg.minEntrustProgress())},
        {QStringLiteral("maxEntrustProgress"), toJson(leg.maxEntrustProgress())},
        {QStringLiteral("minProgress"), toJson(leg.minProgress())},
        {QStringLiteral("maxProgress"), toJson(leg.maxProgress())},
        {QStringLiteral("ortherInfo"), leg.getOrtherInfo()},
        {QStringLiteral("entrustTime"), leg.getEntrustTime()},
        {QStringLiteral("clParentID"), leg.getClParentID()},
        {QStringLiteral("status"), leg.getStatus()},
        {QStringLiteral("deleteFlag"), leg.getDeleteFlag()},
        {QStringLiteral("tradingAccount"), leg.getTradingAccount()},
        {QStringLiteral("fundAccount"), leg.getFundAccount()},
        {QStringLiteral("fundAccountName"), leg.getFundAccountName()},
        {QStringLiteral("securityAccout"), leg.getSecurityAccout()},
        {QStringLiteral("strategyName"), leg.strategyName()},
        {QStringLiteral("targetAmount"), toJson(leg.targetAmount())},
        {QStringLiteral("entrustAmount"), toJson(leg.entrustAmount())},
        {QStringLiteral("amountEntrustProgress"), toJson(leg.amountEntrustProgress())},
        {QStringLiteral("amoutDealProgress"), toJson(leg.amoutDealProgress())},
        {QStringLiteral("tipMsg"), leg.getTipMsg()},
        {QStringLiteral("frontQty"), toJson(leg.getFrontQty())},
        {QStringLiteral("frontOrderNum"), leg.getFrontOrderNum()},
        {QStringLiteral("frontPosition"), toJson(leg.getFrontPosition())},
        {QStringLiteral("sameQtyOrderCnt"), leg.getSameQtyOrderCnt()},
        {QStringLiteral("lastReportMap"), toJson(QVariant(leg.getLastReportMap()))},
        {QStringLiteral("standardProgress"), toJson(leg.standardProgress())},
    };
    if (const auto* t0 = dynamic_cast<const T0SymbolInfo*>(&leg))
        addT0Leg(o, *t0);
    return o;
}

QJsonObject instanceToJson(InstanceInfoBase& inst)
{
    QJsonObject o{
        {QStringLiteral("instAlgoType"), inst.instAlgoType()},
        {QStringLiteral("instanceID"), inst.instanceID()},
        {QStringLiteral("clInstanceID"), inst.clInstanceID()},
        {QStringLiteral("strategyName"), inst.strategyName()},
        {QStringLiteral("params"), inst.params()},
        {QStringLiteral("status"), inst.status()},
        {QStringLiteral("instanceAlias"), inst.instanceAlias()},
        {QStringLiteral("instMode"), inst.getInstMode()},
        {QStringLiteral("marketRate"), inst.getMarketRate()},
        {QStringLiteral("targetQty"), toJson(inst.targetQty())},
        {QStringLiteral("progrees"), toJson(inst.progrees())},
        {QStringLiteral("filledQty"), toJson(inst.filledQty())},
        {QStringLiteral("filledBalance"), toJson(inst.filledBalance())},
        {QStringLiteral("avgPrice"), toJson(inst.avgPrice())},
        {QStringLiteral("remark"), inst.remark()},
        {QStringLiteral("startTime"), time(inst.startTime())},
        {QStringLiteral("modifyTime"), time(inst.modifyTime())},
        {QStringLiteral("endTime"), time(inst.endTime())},
        {QStringLiteral("createTime"), time(inst.getCreateTime())},
        {QStringLiteral("startDateTime"), time(inst.startDateTime())},
        {QStringLiteral("endDateTime"), time(inst.endDateTime())},
        {QStringLiteral("runTimeInParam"), inst.runTimeInParam()},
        {QStringLiteral("minProgress"), toJson(inst.minProgress())},
        {QStringLiteral("maxProgress"), toJson(inst.maxProgress())},
        {QStringLiteral("smpProgress"), inst.smpProgress()},
        {QStringLiteral("instanceComments"), inst.getInstanceComments()},
        {QStringLiteral("instanceTradeOrder"), inst.getInstanceTradeOrder()},
        {QStringLiteral("resultInfo"), inst.getResultInfo()},
        {QStringLiteral("tradingAccount_Inst"), inst.getTradingAccount_Inst()},
        {QStringLiteral("fundAccount_Inst"), inst.getFundAccount_Inst()},
        {QStringLiteral("fundAccountName_Inst"), inst.getFundAccountName_Inst()},
        {QStringLiteral("productName_Inst"), inst.getProductName_Inst()},
        {QStringLiteral("openSide"), inst.getOpenSide()},
        {QStringLiteral("investType"), inst.getInvestType()},
        {QStringLiteral("finalProgress"), inst.finalProgress()},
        {QStringLiteral("symbolList"), list(inst.getSymbolList())},
        {QStringLiteral("symbolTradingAccountList"), list(inst.getSymbolTradingAccountList())},
        {QStringLiteral("targetAmount"), toJson(inst.targetAmount())},
        {QStringLiteral("amountProgress"), toJson(inst.amountProgress())},
        {QStringLiteral("continueTrade"), inst.getContinueTrade()},
        {QStringLiteral("createStart"), inst.getCreateStart()},
        {QStringLiteral("endDate"), inst.getEndDate()},
        {QStringLiteral("memory"), inst.getMemory()},
        {QStringLiteral("cpu"), toJson(inst.getCPU())},
        {QStringLiteral("strategyDeleted"), inst.getStrategyDeleted()},
        {QStringLiteral("classType"), inst.getClassType()},
        {QStringLiteral("basePrice"), inst.getBasePrice()},
        {QStringLiteral("createUser"), inst.getCreateUser()},
        {QStringLiteral("standardProgress"), toJson(inst.standardProgress())},
        {QStringLiteral("symbolSize"), inst.getSymbolSize()},
        // Display texts derived from the legs and the last server record.
        {QStringLiteral("orderSide_Inst"), inst.getOrderSide_Inst()},
        {QStringLiteral("entrustProp_Inst"), inst.getEntrustProp_Inst()},
        {QStringLiteral("entrustQtyStr"), inst.getEntrustQtyStr()},
        {QStringLiteral("tradingAccount"), inst.getTradingAccount()},
        {QStringLiteral("fundAccount"), inst.getFundAccount()},
        {QStringLiteral("fundAccountName"), inst.getFundAccountName()},
        {QStringLiteral("stockAccount"), inst.getStockAccount()},
        {QStringLiteral("productName"), inst.getProductName()},
    };
    if (const auto* t0 = dynamic_cast<const T0InstanceInfo*>(&inst))
        addT0Fields(o, *t0);
    if (const auto* multi = dynamic_cast<const MultiInstanceInfo*>(&inst))
        addMultiFields(o, *multi);

    QJsonArray legs;
    for (SymbolInfoBase* leg : inst.GetAllSymbols_Ptr<SymbolInfoBase>())
        legs.append(legToJson(*leg));
    o.insert(QStringLiteral("legs"), legs);
    return o;
}

QJsonArray instancesToJson()
{
    InstanceMgr* mgr = InstanceMgr::instance();
    const QMap<QString, InstanceInfoBase*> registry = mgr->GetInstanceInfoForAllType();
    QJsonArray array;
    AlgoLogic::ReadLocker locker(mgr->getLocker());
    for (InstanceInfoBase* inst : registry) {
        if (inst)
            array.append(instanceToJson(*inst));
    }
    return array;
}

QJsonObject drainLogs(const QSet<QString>& instanceIds)
{
    LogMgr* logs = LogMgr::instance();
    QHash<QString, QList<QString>> progress;
    logs->popInstProgress(progress);
    QHash<QString, QStringList> messages;
    logs->popInstMsg(messages);
    QHash<QString, QString> diffs;
    logs->popInstDiff(diffs);

    QStringList ids(instanceIds.cbegin(), instanceIds.cend());
    std::sort(ids.begin(), ids.end());
    QJsonObject console;
    for (const QString& id : qAsConst(ids)) {
        QList<QString> lines;
        logs->popInstLog(id, lines);
        if (!lines.isEmpty())
            console.insert(id, list(lines));
    }

    QJsonObject progressJson;
    for (auto it = progress.cbegin(); it != progress.cend(); ++it)
        progressJson.insert(it.key(), list(it.value()));
    QJsonObject messagesJson;
    for (auto it = messages.cbegin(); it != messages.cend(); ++it)
        messagesJson.insert(it.key(), list(it.value()));
    QJsonObject diffsJson;
    for (auto it = diffs.cbegin(); it != diffs.cend(); ++it)
        diffsJson.insert(it.key(), it.value());

    QJsonArray trades;
    const VariantMapList tradeMessages = logs->GetTradeMsgByInstIdList(ids, 1);
    for (const VariantMap& message : tradeMessages)
        trades.append(toJson(QVariant(message)));

    return QJsonObject{
        {QStringLiteral("progress"), progressJson},
        {QStringLiteral("messages"), messagesJson},
        {QStringLiteral("diffs"), diffsJson},
        {QStringLiteral("console"), console},
        {QStringLiteral("tradeMessages"), trades},
    };
}

QJsonObject snapshot(const QSet<QString>& instanceIds)
{
    return QJsonObject{
        {QStringLiteral("instances"), instancesToJson()},
        {QStringLiteral("logs"), drainLogs(instanceIds)},
    };
}

namespace {

QString cell(const QJsonValue& value)
{
    if (value.isDouble()) {
        const double number = value.toDouble();
        return QString::number(number, 'f', number == std::floor(number) ? 0 : 4);
    }
    if (value.isBool())
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    return value.toString();
}

// Terminal columns a text takes: East Asian wide characters take two.
int displayWidth(const QString& text)
{
    int width = 0;
    for (const QChar ch : text) {
        const ushort u = ch.unicode();
        const bool wide = (u >= 0x1100 && u <= 0x115F) || (u >= 0x2E80 && u <= 0xA4CF)
                       || (u >= 0xAC00 && u <= 0xD7A3) || (u >= 0xF900 && u <= 0xFAFF)
                       || (u >= 0xFE30 && u <= 0xFE4F) || (u >= 0xFF00 && u <= 0xFF60)
                       || (u >= 0xFFE0 && u <= 0xFFE6);
        width += wide ? 2 : 1;
    }
    return width;
}

// Rows padded to the widest cell of each column.
QString alignRows(const QList<QStringList>& rows, const QString& indent)
{
    QVector<int> widths;
    for (const QStringList& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (int i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], displayWidth(row.at(i)));
    }
    QString out;
    for (const QStringList& row : rows) {
        QString line = indent;
        for (int i = 0; i < row.size(); ++i)
            line += row.at(i) + QString(widths[i] + 2 - displayWidth(row.at(i)), QLatin1Char(' '));
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        out += line + QLatin1Char('\n');
    }
    return out;
}

} // namespace

QString formatTable(const QJsonArray& instances)
{
    if (instances.isEmpty())
        return QStringLiteral("No instances.\n");
    const QStringList instanceColumns{
        QStringLiteral("instanceID"), QStringLiteral("classType"), QStringLiteral("strategyName"),
        QStringLiteral("instanceAlias"), QStringLiteral("status"), QStringLiteral("targetQty"),
        QStringLiteral("filledQty"), QStringLiteral("filledBalance"),
        QStringLiteral("standardProgress"), QStringLiteral("finalProgress")};
    const QStringList legColumns{
        QStringLiteral("key"), QStringLiteral("orderSide"), QStringLiteral("status"),
        QStringLiteral("targetQty"), QStringLiteral("filledQty"), QStringLiteral("dealAvgPrice"),
        QStringLiteral("dealBalance"), QStringLiteral("standardProgress")};
    const QStringList t0Columns{QStringLiteral("buyDealQty"), QStringLiteral("sellDealQty"),
                                QStringLiteral("achieveProfit"), QStringLiteral("profitAmount")};

    QString out;
    for (const QJsonValue& value : instances) {
        const QJsonObject inst = value.toObject();
        QList<QStringList> rows{instanceColumns, QStringList()};
        for (const QString& column : instanceColumns)
            rows.last().append(cell(inst.value(column)));
        out += alignRows(rows, QString());

        const QJsonArray legs = inst.value(QStringLiteral("legs")).toArray();
        if (!legs.isEmpty()) {
            const bool t0 = legs.first().toObject().contains(QStringLiteral("buyDealQty"));
            const QStringList columns = t0 ? legColumns + t0Columns : legColumns;
            QList<QStringList> legRows{columns};
            for (const QJsonValue& legValue : legs) {
                const QJsonObject leg = legValue.toObject();
                QStringList row;
                for (const QString& column : columns)
                    row.append(cell(leg.value(column)));
                legRows.append(row);
            }
            out += alignRows(legRows, QStringLiteral("    "));
        }
        out += QLatin1Char('\n');
    }
    return out;
}

} // namespace AlgoReplay
