#include "strategy/strategymgr.h"
#include "common/locking.h"

#include "common/logging.h"
#include "common/metatypes.h"
#include "platform/kxalgodatamgr.h"

namespace {
const QString kSingleSymbolProp = QStringLiteral("1");
const QString kMultiSymbolProp = QStringLiteral("2");
} // namespace

StrategyMgr* StrategyMgr::instance()
{
    static StrategyMgr* const s_instance = new StrategyMgr(nullptr);
    return s_instance;
}

StrategyMgr::StrategyMgr(QObject* parent)
    : QObject(parent)
{
    AlgoLogic::registerMetaTypes();
}

StrategyMgr::~StrategyMgr() = default;

void StrategyMgr::init()
{
    qCDebug(lcAlgoStrategy).noquote() << "StrategyMgr::init" << QStringLiteral("算法逻辑层")
                                      << "StrategyMgr init";
    KxAlgoDataMgr* dataMgr = &KxAlgoDataMgr::instance();
    if (!m_connected) {
        m_connected = true;
        connect(dataMgr, &KxAlgoDataMgr::sigAlgoInfoReady, this, [this] {
            qCDebug(lcAlgoStrategy).noquote() << "StrategyMgr init";
            emit sigAlgoInfoReady();
        });
        connect(dataMgr, &KxAlgoDataMgr::signalNewAuthority, this,
                [this](const AuthorityTable& table) {
                    qCDebug(lcAlgoStrategy).noquote()
                        << "StrategyMgr::signalNewAuthority" << table.size();
                    replaceAuthority(table);
                    emit signalNewAuthority(table);
                });
        connect(dataMgr, &KxAlgoDataMgr::sigQryAlgoStrategiesRsp, this,
                [this](const QList<AesStrategy>& list) { emit sigQryAlgoStrategiesRsp(list); });
    }
    getCacheData();
    dataMgr->requestAlgoData();
}

void StrategyMgr::getCacheData()
{
    qCDebug(lcAlgoStrategy).noquote() << "StrategyMgr::getCacheData";
    KxAlgoDataMgr& dataMgr = KxAlgoDataMgr::instance();
    if (dataMgr.isAlgoStrategyReady()) {
        emit sigAlgoInfoReady();
        const QList<AesStrategy> list = dataMgr.GetAllStrategies();
        emit sigQryAlgoStrategiesRsp(list);
        qCDebug(lcAlgoStrategy).noquote() << "StrategyMgr::getCacheData" << list.size();
    }
    if (dataMgr.isNewAuthorityReady()) {
        const AuthorityTable table = dataMgr.GetAllAuthorityInfo();
        replaceAuthority(table);
        emit signalNewAuthority(table);
        qCDebug(lcAlgoStrategy).noquote() << "StrategyMgr::getCacheData" << table.size();
    }
}

void StrategyMgr::replaceAuthority(const AuthorityTable& table)
{
    AlgoLogic::WriteLocker locker(&m_lock);
    m_authorityMap = table;
}

AesStrategy StrategyMgr::GetStrategy(const QString& algoName) const
{
    return KxAlgoDataMgr::instance().GetStrategy(algoName);
}

QMap<QString, AesStrategy> StrategyMgr::GetStrategyList(QMap<QString, QString> filter) const
{
    return KxAlgoDataMgr::instance().GetStrategyList(filter);
}

void StrategyMgr::GetAllStrategies(QList<AesStrategy>& out, const QString& algoType) const
{
    KxAlgoDataMgr::instance().GetAllStrategies(out, algoType);
}

void StrategyMgr::GetStrategyCnt(int& count) const
{
    KxAlgoDataMgr::instance().GetStrategyCnt(count);
}

QString StrategyMgr::GetFeeId(const QString& algoName) const
{
    return KxAlgoDataMgr::instance().getFeeId(algoName);
}

QString StrategyMgr::GetReportFormat(const QString& algoName) const
{
    return KxAlgoDataMgr::instance().GetReportFormat(algoName);
}

QString StrategyMgr::GetUnderlyingMaxNum(const QString& algoName) const
{
    return KxAlgoDataMgr::instance().GetUnderlyingMaxNum(algoName);
}

bool StrategyMgr::ContainsStrategy(const QString& algoName) const
{
    return KxAlgoDataMgr::instance().ContainsStrategy(algoName);
}

ALGO_SYMBOL_FLAG StrategyMgr::GetAlgoSymbolType(const QString& algoName) const
{
    const QString prop = KxAlgoDataMgr::instance().GetStrategy(algoName).underlyingProp();
    // "2" (several securities) is tested for explicitly and still gives 0,
    // the same as any unknown property.
    if (prop == kMultiSymbolProp)
        return ALGO_SYMBOL_MULTI;
    if (prop == kSingleSymbolProp)
        return ALGO_SYMBOL_SINGLE;
    return ALGO_SYMBOL_MULTI;
}

QString StrategyMgr::GetAlgoNode(QString account, QString algoName, QString category) const
{
    AlgoLogic::ReadLocker locker(&m_lock);
    // value() on const maps never inserts the missing levels.
    return m_authorityMap.value(account).value(category).value(algoName);
}
