#include "instance/instanceinfobase.h"

#include "common/algoconstants.h"
#include "instance/instancefilterindex.h"
#include "instance/instancemgr.h"
#include "platform/algodefines.h"
#include "strategy/strategymgr.h"
#include "symbol/t0symbolinfo.h"

#include <QSet>

namespace {

const QString kStatusNotStarted = QStringLiteral("0");
const QString kStatusRunning = QStringLiteral("1");
const QString kStatusWaitingCreate = QStringLiteral("3");

// A new leg of the class a copy with class tag `classType` holds, copied
// from `source`; null for an unknown tag.
SymbolInfoBase* copyLegForClass(const QString& classType, const SymbolInfoBase& source)
{
    if (classType == AlgoConst::ClassTypeT0) {
        auto* leg = new T0SymbolInfo;
        if (const auto* t0Source = dynamic_cast<const T0SymbolInfo*>(&source))
            *leg = *t0Source;
        else
            static_cast<SymbolInfoBase&>(*leg) = source;
        return leg;
    }
    if (classType == AlgoConst::ClassTypeInfo || classType == AlgoConst::ClassTypeMulti) {
        auto* leg = new SymbolInfoBase;
        *leg = source;
        return leg;
    }
    return nullptr;
}

} // namespace

InstanceInfoBase::InstanceInfoBase()
    : m_instanceID(QLatin1String(""))
    , m_instMode(QLatin1String(""))
    , m_marketRate(QLatin1String(""))
    , m_remark(QLatin1String(""))
    , m_tradingAccount_Inst(QLatin1String(""))
    , m_fundAccount_Inst(QLatin1String(""))
    , m_fundAccountName_Inst(QLatin1String(""))
    , m_productName_Inst(QLatin1String(""))
    , m_openSide(QLatin1String(""))
    , m_investType(QLatin1String(""))
    , m_classType(QLatin1String(""))
{
}

InstanceInfoBase::InstanceInfoBase(const InstanceInfoBase& other)
    : InstanceInfoBase()
{
    *this = other;
}

InstanceInfoBase& InstanceInfoBase::operator=(const InstanceInfoBase& other)
{
    if (this == &other)
        return *this;

    m_instAlgoType = other.m_instAlgoType;
    m_instanceID = other.m_instanceID;
    m_clInstanceID = other.m_clInstanceID;
    m_strategyName = other.m_strategyName;
    m_params = other.m_params;
    m_status = other.m_status;
    m_instanceAlias = other.m_instanceAlias;
    m_dataMap = other.m_dataMap;
    m_instMode = other.m_instMode;
    m_marketRate = other.m_marketRate;
    m_targetQty = other.m_targetQty;
    m_progrees = other.m_progrees;
    m_filledQty = other.m_filledQty;
    m_filledBalance = other.m_filledBalance;
    m_avgPrice = other.m_avgPrice;
    m_remark = other.m_remark;
    m_startTime = other.m_startTime;
    m_modifyTime = other.m_modifyTime;
    m_endTime = other.m_endTime;
    m_createTime = other.m_createTime;
    m_startDateTime = other.m_startDateTime;
    m_endDateTime = other.m_endDateTime;
    m_runTimeInParam = other.m_runTimeInParam;
    m_minProgress = other.m_minProgress;
    m_maxProgress = other.m_maxProgress;
    m_smpProgress = other.m_smpProgress;
    m_instanceComments = other.m_instanceComments;
    m_instanceTradeOrder = other.m_instanceTradeOrder;
    m_resultInfo = other.m_resultInfo;
    m_tradingAccount_Inst = other.m_tradingAccount_Inst;
    m_fundAccount_Inst = other.m_fundAccount_Inst;
    m_fundAccountName_Inst = other.m_fundAccountName_Inst;
    m_productName_Inst = other.m_productName_Inst;
    m_openSide = other.m_openSide;
    m_investType = other.m_investType;
    m_finalProgress = other.m_finalProgress;
    m_symbolList = other.m_symbolList;
    m_symbolTradingAccountList = other.m_symbolTradingAccountList;
    m_targetAmount = other.m_targetAmount;
    m_amountProgress = other.m_amountProgress;
    m_continueTrade = other.m_continueTrade;
    m_createStart = other.m_createStart;
    m_endDate = other.m_endDate;
    m_memory = other.m_memory;
    m_CPU = other.m_CPU;
    m_strategyDeleted = other.m_strategyDeleted;
    m_classType = other.m_classType;
    m_basePrice = other.m_basePrice;
    m_createUser = other.m_createUser;
    noteFilterFieldsChanged();

    QMap<QString, SymbolInfoBase*> legs;
    for (auto it = other.m_symbolMap.cbegin(); it != other.m_symbolMap.cend(); ++it) {
        if (!it.value())
            continue;
        SymbolInfoBase* leg = copyLegForClass(m_classType, *it.value());
        if (!leg)
            break; // unknown class tag: no leg class to copy into
        legs.insert(it.key(), leg);
    }
    deleteLegs();
    m_symbolMap = legs;
    return *this;
}

InstanceInfoBase::~InstanceInfoBase()
{
    InstanceFilterIndex::forget(this);
    deleteLegs();
}

void InstanceInfoBase::deleteLegs()
{
    QSet<SymbolInfoBase*> unique;
    for (SymbolInfoBase* leg : qAsConst(m_symbolMap))
        unique.insert(leg);
    for (SymbolInfoBase* leg : qAsConst(m_replacedLegs))
        unique.insert(leg);
    m_symbolMap.clear();
    m_replacedLegs.clear();
    for (SymbolInfoBase* leg : qAsConst(unique))
        delete leg;
}

// ---- handlers ---------------------------------------------------------------

void InstanceInfoBase::OnRecv_DeleteAlgoInstanceResponse(const VariantMap& record)
{
    Q_UNUSED(record)
    m_strategyDeleted = Algo_Values::AlgoDeleteStatus::deleted;
    noteFilterFieldsChanged();
}

// ---- fields the registry's queries filter on ----------------------------------

void InstanceInfoBase::noteFilterFieldsChanged() const
{
    InstanceFilterIndex::noteFieldsChanged(this);
}

namespace {

// Assigns and tells whether the text changed.
bool assignText(QString& field, const QString& value)
{
    const bool changed = field != value;
    field = value;
    return changed;
}

} // namespace

void InstanceInfoBase::setInstAlgoType(const QString& type)
{
    if (assignText(m_instAlgoType, type))
        noteFilterFieldsChanged();
}

void InstanceInfoBase::setInstanceID(const QString& id)
{
    if (assignText(m_instanceID, id))
        noteFilterFieldsChanged();
}

void InstanceInfoBase::setStrategyName(const QString& name)
{
    if (assignText(m_strategyName, name))
        noteFilterFieldsChanged();
}

void InstanceInfoBase::setStrategyDeleted(const QString& deleted)
{
    if (assignText(m_strategyDeleted, deleted))
        noteFilterFieldsChanged();
}

void InstanceInfoBase::setCreateUser(const QString& user)
{
    if (assignText(m_createUser, user))
        noteFilterFieldsChanged();
}

// ---- status and progress rules ------------------------------------------------

bool InstanceInfoBase::setStatus(const QString& status)
{
    if (status == m_status)
        return false;
    if (m_status == kStatusWaitingCreate) {
        m_status = status;
        return true;
    }
    const bool notFinished = m_status == kStatusNotStarted || m_status == kStatusRunning;
    const bool finished = m_status == Algo_Values::InstanceStates::COMPLETE
                       || m_status == Algo_Values::InstanceStates::STOP;
    if ((notFinished && status == kStatusWaitingCreate) || finished) {
        qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::setStatus"
                                          << "InstanceInfoBase::setStatus invalid status"
                                          << m_status << status;
        return false;
    }
    m_status = status;
    return true;
}

bool InstanceInfoBase::isFinalStatus() const
{
    return m_status == Algo_Values::InstanceStates::COMPLETE
        || m_status == Algo_Values::InstanceStates::STOP;
}

double InstanceInfoBase::standardProgress() const
{
    return StandardProgressAlgoNames.contains(m_strategyName) ? m_amountProgress : m_progrees;
}

void InstanceInfoBase::setProgrees(double progress)
{
    if (m_progrees > progress) {
        qCWarning(lcAlgoInstance).noquote()
            << "InstanceInfoBase::setProgrees invalid progress, instid:" << m_instanceID
            << "old progress" << m_progrees << "new progress" << progress;
    }
    m_progrees = progress;
}

void InstanceInfoBase::setAmountProgress(double progress)
{
    if (m_amountProgress > progress) {
        qCWarning(lcAlgoInstance).noquote()
            << "InstanceInfoBase::setProgrees invalid progress, instid:" << m_instanceID
            << "old progress" << m_amountProgress << "new progress" << progress;
        return;
    }
    m_amountProgress = progress;
}

void InstanceInfoBase::setFilledQty(double qty)
{
    if (m_filledQty > qty) {
        qCWarning(lcAlgoInstance).noquote()
            << "InstanceInfoBase::setFilledQty invalid filledQty, instid:" << m_instanceID
            << "old qty" << m_filledQty << "new qty" << qty;
        return;
    }
    m_filledQty = qty;
}

void InstanceInfoBase::setFilledBalance(double balance)
{
    if (m_filledBalance > balance) {
        qCWarning(lcAlgoInstance).noquote()
            << "InstanceInfoBase::setFilledBalance invalid filledBalance, instid:"
            << m_instanceID << "old filledBalance" << m_filledBalance << "new filledBalance"
            << balance;
        return;
    }
    m_filledBalance = balance;
}

QString InstanceInfoBase::getInstMode()
{
    if (m_instMode.isEmpty())
        setInstMode(QString());
    return m_instMode;
}

void InstanceInfoBase::setInstMode(QString mode)
{
    if (!mode.isEmpty()) {
        m_instMode = mode;
        return;
    }
    const bool singleSymbol = StrategyMgr::instance()->GetAlgoSymbolType(m_strategyName) != 0;
    m_instMode = singleSymbol ? Algo_Values::instMode::singleMode
                              : Algo_Values::instMode::multiMode;
}

void InstanceInfoBase::setInstanceTradeOrder(const QString& order)
{
    const bool grid = m_strategyName == AlgoConst::AlgoGridTrading
                   || m_strategyName == AlgoConst::AlgoGridTradingYmd;
    m_instanceTradeOrder = (grid && order.isEmpty()) ? Algo_Values::AlgoGlobalType::all : order;
}

QString InstanceInfoBase::reportFmt() const
{
    // The catalogue is asked with the instance ID, as the terminal always has.
    return StrategyMgr::instance()->GetReportFormat(m_instanceID);
}

void InstanceInfoBase::setParams(const QString& params)
{
    m_params = params;
    UpdateParamMap(params);
}

// ---- legs -----------------------------------------------------------------------

void InstanceInfoBase::AddSymbolInfo(SymbolInfoBase* leg)
{
    if (!leg) {
        qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::AddSymbolInfo"
                                          << "symbolInfo is null" << m_instanceID;
        return;
    }
    const QString key = leg->getKey();
    SymbolInfoBase* previous = m_symbolMap.value(key, nullptr);
    if (previous == leg)
        return;
    if (previous)
        m_replacedLegs.append(previous);
    m_symbolMap.insert(key, leg);
}

bool InstanceInfoBase::keyPartsUsable(const char* function, const QString& symbol,
                                      const QString& side) const
{
    if (!symbol.contains(QLatin1Char('_')) && !side.contains(QLatin1Char('_')))
        return true;
    qCWarning(lcAlgoInstance).noquote() << function << "symbol key part contains _, skipped"
                                        << m_instanceID << symbol << side;
    return false;
}

SymbolInfoBase* InstanceInfoBase::findOrAddLeg(const QString& symbol, const QString& side)
{
    const QString key = InstanceMgr::GetSymbolExtInfoKey(m_instanceID, symbol, side);
    if (SymbolInfoBase* leg = getSymbolInfo(key))
        return leg;
    SymbolInfoBase* leg = InstanceMgr::CreateSymbolInfo(m_instAlgoType, symbol);
    leg->setInstanceID(m_instanceID);
    leg->setStrategyName(m_strategyName);
    leg->setSymbol(symbol);
    leg->setOrderSide(side);
    leg->setKey(key);
    AddSymbolInfo(leg);
    return leg;
}

SymbolInfoBase* InstanceInfoBase::getSymbolInfo(const QString& key) const
{
    return m_symbolMap.value(key, nullptr);
}

int InstanceInfoBase::getSymbolSize() const
{
    return m_symbolMap.size();
}

QStringList InstanceInfoBase::GetAllSymbolNames() const
{
    qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::GetAllSymbolNames"
                                      << m_symbolMap.size();
    QStringList names;
    for (auto it = m_symbolMap.cbegin(); it != m_symbolMap.cend(); ++it) {
        if (!it.value()) {
            qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::GetAllSymbolNames"
                                              << "symbolInfo is null" << it.key();
            continue;
        }
        names.append(it.value()->symbol());
    }
    qCDebug(lcAlgoInstance).noquote() << "InstanceInfoBase::GetAllSymbolNames" << names.size();
    return names;
}

void InstanceInfoBase::getOneSymbol(QString& symbol, QString& orderSide) const
{
    if (m_symbolMap.isEmpty())
        return;
    const SymbolInfoBase* first = m_symbolMap.first();
    if (!first)
        return;
    symbol = first->symbol();
    orderSide = first->orderSide();
}
