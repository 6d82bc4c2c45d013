#include "floors.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <algorithm>

namespace Floor {

namespace {

namespace S = Tessel_Fields::Strategy;
namespace Sec = Tessel_Fields::Security;
namespace H = Algo_Fields::HelmStrategy;
namespace C = Algo_Fields::AlgoInstContentInfo;
namespace P = Algo_Fields::AlgoInstProgressFields;
namespace V = Algo_Values::AlgoParamId;

const QString kAll = Algo_Values::AlgoGlobalType::all;
const QString kAck = QStringLiteral("1");
const QString kPushTimeFormat = QStringLiteral("yyyyMMdd-hh:mm:ss");
const QString kParamTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");
const QString kEntrustTimeFormat = QStringLiteral("HH:mm:ss");
constexpr QChar kSep = QLatin1Char('_');

struct LeanRegistry
{
    QReadWriteLock lock;
    QHash<QString, Instance*> byId;   // guarded by lock
    QMap<QString, Instance*> ordered; // guarded by lock
};

LeanRegistry& registry()
{
    static LeanRegistry s_registry;
    return s_registry;
}

double ratio(double n, double d)
{
    return AlgoLogic::safeRatio(n, d);
}

// The guarded setters' rule: a regression of a dealt figure is refused.
void raise(double& stored, double value)
{
    if (!(stored > value))
        stored = value;
}

} // namespace

QReadWriteLock& contentLock()
{
    static QReadWriteLock s_lock(QReadWriteLock::Recursive);
    return s_lock;
}

void mirrorRegistry()
{
    const QMap<QString, InstanceInfoBase*> real =
        InstanceMgr::instance()->GetInstanceInfoForAllType();
    LeanRegistry& r = registry();
    AlgoLogic::WriteLocker registryLocker(&r.lock);
    if (r.byId.size() == real.size())
        return;
    AlgoLogic::ReadLocker contentLocker(InstanceMgr::instance()->getLocker());
    for (auto it = real.cbegin(); it != real.cend(); ++it) {
        if (r.byId.contains(it.key()))
            continue;
        const InstanceInfoBase* source = it.value();
        auto* inst = new Instance;
        inst->id = source->instanceID();
        inst->algoType = source->instAlgoType();
        inst->name = source->strategyName();
        inst->status = source->status();
        inst->deleted = source->getStrategyDeleted();
        inst->creator = source->getCreateUser();
        inst->params = source->params();
        inst->targetQty = source->targetQty();
        for (const SymbolInfoBase* sourceLeg : source->GetAllSymbols_Ptr<SymbolInfoBase>()) {
            auto* leg = new Leg;
            leg->key = sourceLeg->getKey();
            leg->symbol = sourceLeg->symbol();
            leg->side = sourceLeg->orderSide();
            leg->status = sourceLeg->getStatus();
            leg->targetQty = sourceLeg->targetQty();
            if (auto* t0 = dynamic_cast<const T0SymbolInfo*>(sourceLeg)) {
                leg->buyDealQty = t0->buyDealQty();
                leg->sellDealQty = t0->sellDealQty();
                leg->buyAmount = t0->buyAmount();
                leg->sellAmount = t0->sellAmount();
            }
            inst->legs.insert(leg->key, leg);
        }
        r.byId.insert(it.key(), inst);
        r.ordered.insert(it.key(), inst);
    }
}

Instance* find(const QString& id)
{
    LeanRegistry& r = registry();
    AlgoLogic::ReadLocker locker(&r.lock);
    return r.byId.value(id, nullptr);
}

void progressGather(const VariantMapList& records, Outputs& out)
{
    if (records.isEmpty())
        return;
    const QString id = records.first().value(S::strategyID).toString();
    Instance* inst = find(id);
    if (!inst)
        return;
    AlgoLogic::WriteLocker locker(&contentLock());
    struct Entry
    {
        QString side;
        double filled = 0.0, entrusted = 0.0, amount = 0.0, avg = 0.0, entrustedAmount = 0.0;
    };
    QHash<QString, Entry> entries;
    entries.reserve(records.size());
    double target = 0.0, filled = 0.0, amount = 0.0;
    for (int i = 1; i < records.size(); ++i) {
        const VariantMap& record = records.at(i);
        const QString symbol = record.value(Sec::symbol).toString();
        Entry e;
        e.entrusted = record.value(Sec::orderQty).toDouble();
        e.filled = record.value(Sec::cumQty).toDouble();
        e.amount = record.value(H::StrategyCumAmount).toDouble();
        e.side = record.value(Sec::side).toString();
        if (e.side.isEmpty())
            e.side = inst->tradeOrder;
        e.avg = record.value(Sec::avgPx).toDouble();
        e.entrustedAmount = record.value(H::onTradingAmount).toDouble() + e.amount;
        const double factor = HelmBusinessDataInterface::GetDispFactorBySymbol(symbol);
        target += e.entrusted * factor;
        filled += e.filled * factor;
        amount += e.amount;
        entries.insert(symbol % kSep % e.side, e);
    }
    raise(inst->filledQty, filled);
    raise(inst->filledBalance, amount);
    inst->progress = ratio(filled, inst->targetQty);
    raise(inst->amountProgress, ratio(amount, inst->targetAmount));
    for (Leg* leg : qAsConst(inst->legs)) {
        const int first = leg->key.indexOf(kSep);
        const QString symbolSide = leg->key.mid(first + 1);
        const Entry e = entries.value(symbolSide);
        raise(leg->dealBalance, e.amount);
        raise(leg->filledQty, e.filled);
        leg->avgPrice = e.avg;
        leg->entrustQty = e.entrusted;
        leg->side = e.side;
        leg->entrustProgress = ratio(e.entrusted, leg->targetQty);
        leg->progress = ratio(e.filled, leg->targetQty);
        leg->entrustAmount = e.entrustedAmount;
        leg->amountEntrustProgress = ratio(e.entrustedAmount, leg->targetAmount);
        raise(leg->amountDealProgress, ratio(e.amount, leg->targetAmount));
        out.keys.append(leg->symbol % kSep % e.side);
        out.remaining.insert(symbolSide, leg->targetQty - e.entrusted);
    }
    if (inst->status == Algo_Values::InstanceStates::COMPLETE
        || inst->status == Algo_Values::InstanceStates::STOP)
        inst->finalProgress = true;
}

void strategyReport(const VariantMapList& records, Outputs& out)
{
    if (records.size() < 2)
        return;
    const QString id = records.first().value(S::strategyID).toString();
    Instance* inst = find(id);
    if (!inst)
        return;
    AlgoLogic::WriteLocker locker(&contentLock());
    if (records.at(1).value(S::reportType).toString() != Algo_Values::ReportType::ui)
        return;
    QHash<QString, qint64> lastTimestamp;
    for (int i = 1; i < records.size(); ++i) {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(
            records.at(i).value(S::strategyReport).toString().toUtf8(), &error);
        if (error.error != QJsonParseError::NoError)
            continue;
        const VariantMap report = document.object().toVariantMap();
        const QString symbol = report.value(P::Symbol).toString();
        const QString side = report.value(C::OrderSide).toString();
        const qint64 timestamp = report.value(P::Timestamp).toLongLong();
        const QString symbolSide = symbol % kSep % side;
        auto last = lastTimestamp.find(symbolSide);
        if (last != lastTimestamp.end() && timestamp < last.value())
            continue;
        lastTimestamp.insert(symbolSide, timestamp);
        const QString key = inst->id % kSep % symbolSide;
        Leg* leg = inst->legs.value(key, nullptr);
        if (!leg)
            continue;
        const double targetQty = report.value(P::TargetQty).toDouble();
        const double targetAmount = report.value(P::TargetAmount).toDouble();
        const double filled = report.value(P::FilledQty).toDouble();
        const double dealAmount = report.value(P::DealAmount).toDouble();
        const double entrustAmount = report.value(P::EntrustAmount).toDouble();
        leg->avgPrice = report.value(P::DealAvgPrice).toDouble();
        leg->entrustQty = report.value(P::EntrustQty).toDouble();
        leg->entrustProgress = ratio(leg->entrustQty, targetQty);
        raise(leg->filledQty, filled);
        leg->progress = ratio(filled, targetQty);
        leg->targetQty = targetQty;
        leg->targetAmount = targetAmount;
        raise(leg->dealBalance, dealAmount);
        leg->entrustAmount = entrustAmount;
        leg->amountEntrustProgress = ratio(entrustAmount, targetAmount);
        raise(leg->amountDealProgress, ratio(dealAmount, targetAmount));
        const qint64 lastOrder = report.value(P::lastOrderTime).toString().toLongLong();
        if (lastOrder != 0)
            leg->entrustTime =
                QDateTime::fromMSecsSinceEpoch(lastOrder).toString(kEntrustTimeFormat);
        for (auto it = report.cbegin(); it != report.cend(); ++it)
            leg->lastReport.insert(it.key(), it.value());
        out.keys.append(key);
    }
    double target = 0.0, filled = 0.0, amount = 0.0, targetAmount = 0.0;
    for (const Leg* leg : qAsConst(inst->legs)) {
        const double factor = HelmBusinessDataInterface::GetDispFactorBySymbol(leg->symbol);
        target += leg->targetQty * factor;
        filled += leg->filledQty * factor;
        amount += leg->dealBalance;
        targetAmount += leg->targetAmount;
    }
    inst->targetQty = target;
    raise(inst->filledQty, filled);
    raise(inst->filledBalance, amount);
    inst->progress = ratio(filled, target);
    inst->targetAmount = targetAmount;
    raise(inst->amountProgress, ratio(amount, targetAmount));
}

void statusUpdate(const QString& id, const VariantMapList& records, Outputs& out)
{
    if (records.isEmpty() || !records.first().contains(S::strategyStatus))
        return;
    Instance* inst = find(id);
    if (!inst)
        return;
    AlgoLogic::WriteLocker locker(&contentLock());
    const VariantMap& first = records.first();
    const QString status = first.value(S::strategyStatus).toString();
    if (status != inst->status)
        inst->status = status;
    const auto comment = first.constFind(H::StrategyAlterComment);
    if (comment != first.constEnd())
        inst->remark = comment.value().toString();
    const auto end = first.constFind(H::AlgEndTime);
    if (end != first.constEnd()) {
        const QDateTime time = QDateTime::fromString(end.value().toString(), kPushTimeFormat);
        if (time.isValid())
            inst->endTime = time;
    }
    for (int i = 1; i < records.size(); ++i) {
        const VariantMap& record = records.at(i);
        const auto side = record.constFind(Sec::side);
        const QString key = inst->id % kSep % record.value(Sec::symbol).toString() % kSep
                          % (side != record.constEnd() ? side.value().toString() : kAll);
        Leg* leg = inst->legs.value(key, nullptr);
        if (!leg)
            continue;
        leg->status = record.value(S::strategyStatus).toString();
        out.legRecords.insert(key, record);
    }
    out.status = inst->status;
}

void modifyPush(const QString& id, const VariantMapList& records, Outputs& out)
{
    if (records.isEmpty())
        return;
    Instance* inst = find(id);
    if (!inst)
        return;
    AlgoLogic::WriteLocker locker(&contentLock());
    const VariantMap& first = records.first();
    if (first.value(H::ExecAckStatus).toString() == kAck) {
        const QString params = first.value(S::strategyParas).toString();
        inst->params = params;
        const VariantMap map = QJsonDocument::fromJson(params.toUtf8()).object().toVariantMap();
        // The parameter-derived display fields, from the one parse.
        out.keys.append(map.value(V::comment).toString());
        out.keys.append(map.value(C::instMode).toString());
        out.keys.append(map.value(C::participationrate).toString());
        out.keys.append(map.value(V::OpenClose).toString());
        out.keys.append(map.value(V::InvestType).toString());
        inst->startTime =
            QDateTime::fromString(map.value(C::AlgoStartTime).toString(), kParamTimeFormat);
        inst->endTime =
            QDateTime::fromString(map.value(C::AlgoEndTime).toString(), kParamTimeFormat);
        out.remaining.insert(
            map.value(C::TradingAccount).toString(),
            HelmBusinessDataInterface::GetAccountInfoListFromTrade(
                map.value(C::TradingAccount).toString(), true).size());
        double target = 0.0;
        const QVariantList securities = map.value(C::SymbolParamKey).toList();
        for (const QVariant& item : securities) {
            const VariantMap entry = item.toMap();
            const QString symbol = entry.value(C::Symbol).toString();
            const QString side = entry.value(C::OrderSide).toString();
            if (symbol.contains(kSep) || side.contains(kSep))
                continue;
            Leg* leg = inst->legs.value(inst->id % kSep % symbol % kSep % side, nullptr);
            if (!leg)
                continue;
            const double quantity = entry.value(C::Quantity).toDouble();
            leg->limitPrice = entry.value(C::PriceLimits).toString();
            leg->targetQty = quantity;
            leg->targetAmount = entry.value(C::Quantity_Amount).toDouble();
            target += quantity * HelmBusinessDataInterface::GetDispFactorBySymbol(symbol);
        }
        inst->targetQty = target;
    }
    inst->status = first.value(S::strategyStatus).toString();
    out.status = first.value(H::StrategyAlterComment).toString();
}

void queryResponse(const VariantMapList& records, Outputs& out)
{
    for (const VariantMap& record : records) {
        const QString id = record.value(S::strategyID).toString();
        if (id.isEmpty())
            continue;
        Instance* inst = find(id);
        if (!inst)
            continue;
        AlgoLogic::WriteLocker locker(&contentLock());
        const QString name = record.value(S::strategyName).toString();
        const AesStrategy strategy = StrategyMgr::instance()->GetStrategy(name);
        if (strategy.name().isEmpty())
            continue;
        for (auto it = record.cbegin(); it != record.cend(); ++it)
            inst->data.insert(it.key(), it.value());
        const auto deleted = record.constFind(H::strategyDeleted);
        if (deleted != record.constEnd())
            inst->deleted = deleted.value().toString();
        const auto alias = record.constFind(S::StrategyInstanceAlias);
        if (alias != record.constEnd())
            inst->alias = alias.value().toString();
        const QString status = record.value(S::strategyStatus).toString();
        const bool changed = status != inst->status;
        inst->status = status;
        if (changed || !inst->createTime.isValid()) {
            const auto created = record.constFind(H::AlgCreateTime);
            if (created != record.constEnd())
                inst->createTime =
                    QDateTime::fromString(created.value().toString(), kPushTimeFormat);
        }
        out.status = inst->status;
        if (inst->deleted == Algo_Values::AlgoDeleteStatus::deleted)
            out.keys.append(id);
    }
}

int t0Tick()
{
    LeanRegistry& r = registry();
    std::vector<std::pair<Leg*, QString>> legs;
    {
        AlgoLogic::ReadLocker registryLocker(&r.lock);
        AlgoLogic::ReadLocker contentLocker(&contentLock());
        for (const Instance* inst : qAsConst(r.ordered)) {
            if (inst->algoType != Algo_Values::AlgoGlobalType::T0)
                continue;
            for (Leg* leg : inst->legs)
                legs.emplace_back(leg, leg->symbol);
        }
    }
    CommonQuotaHandler& quotes = CommonQuotaHandler::instance();
    for (const auto& entry : legs) {
        const double price = quotes.GetLatestPrice(entry.second, 0);
        AlgoLogic::WriteLocker locker(&contentLock());
        Leg* leg = entry.first;
        leg->profit = leg->sellAmount - (leg->sellDealQty - leg->buyDealQty) * price
                    - leg->buyAmount - leg->buyFee - leg->sellFee;
    }
    return int(legs.size());
}

void FlatIndex::build()
{
    m_entries.clear();
    m_texts.clear();
    const auto intern = [this](const QString& text) {
        return m_texts.insert(text, m_texts.value(text, m_texts.size())).value();
    };
    m_empty = intern(QString());
    InstanceMgr* mgr = InstanceMgr::instance();
    const QMap<QString, InstanceInfoBase*> real = mgr->GetInstanceInfoForAllType();
    AlgoLogic::ReadLocker contentLocker(mgr->getLocker());
    m_entries.reserve(real.size());
    for (const InstanceInfoBase* inst : real) {
        m_entries.push_back({inst->instanceID(), intern(inst->instAlgoType()),
                             intern(inst->getCreateUser()), intern(inst->strategyName()),
                             inst->getStrategyDeleted() == Algo_Values::AlgoDeleteStatus::deleted});
    }
}

bool FlatIndex::creatorPasses(const Entry& e, bool allCreators, int login) const
{
    return allCreators || e.creator == m_empty || e.creator == login;
}

QStringList FlatIndex::all() const
{
    QStringList ids;
    ids.reserve(int(m_entries.size()));
    for (const Entry& e : m_entries)
        ids.append(e.id);
    return ids;
}

QStringList FlatIndex::ofType(const QString& type) const
{
    const int wanted = idOf(type);
    QStringList ids;
    for (const Entry& e : m_entries)
        if (e.type == wanted)
            ids.append(e.id);
    return ids;
}

QStringList FlatIndex::live(const QString& type, bool allCreators) const
{
    const int wanted = idOf(type);
    const int login = idOf(CBusinessDataBase::GetInstance()->GetLoginAccount());
    QStringList ids;
    for (const Entry& e : m_entries)
        if (e.type == wanted && !e.deleted && creatorPasses(e, allCreators, login))
            ids.append(e.id);
    return ids;
}

QStringList FlatIndex::liveAllTypes(bool allCreators) const
{
    const int login = idOf(CBusinessDataBase::GetInstance()->GetLoginAccount());
    QStringList ids;
    for (const Entry& e : m_entries)
        if (!e.deleted && creatorPasses(e, allCreators, login))
            ids.append(e.id);
    return ids;
}

QStringList FlatIndex::withNames(const QStringList& names) const
{
    std::vector<bool> wanted(m_texts.size(), false);
    for (const QString& name : names) {
        const int id = idOf(name);
        if (id >= 0)
            wanted[size_t(id)] = true;
    }
    QStringList ids;
    for (const Entry& e : m_entries)
        if (wanted[size_t(e.name)])
            ids.append(e.id);
    return ids;
}

QStringList mapWalkLive(const QString& type, bool allCreators)
{
    LeanRegistry& r = registry();
    const QString login = CBusinessDataBase::GetInstance()->GetLoginAccount();
    AlgoLogic::ReadLocker registryLocker(&r.lock);
    AlgoLogic::ReadLocker contentLocker(&contentLock());
    QStringList ids;
    for (const Instance* inst : qAsConst(r.ordered)) {
        if (inst->deleted == Algo_Values::AlgoDeleteStatus::deleted || inst->algoType != type)
            continue;
        if (!allCreators && !inst->creator.isEmpty() && inst->creator != login)
            continue;
        ids.append(inst->id);
    }
    return ids;
}

} // namespace Floor
