// The periodic recalculation of the floating profit of T0 legs.

#include "instance/instancemgr.h"
#include "common/locking.h"

#include "common/logging.h"
#include "instance/instanceinfobase.h"
#include "platform/algodefines.h"
#include "platform/quotehandler.h"
#include "symbol/t0symbolinfo.h"
#include "variants/t0instanceinfo.h"

template <typename T>
QList<T*> InstanceMgr::GetInstanceInfoList(const QString& algoType)
{
    QList<T*> result;
    AlgoLogic::ReadLocker registryLocker(&m_lockInstance);
    if (algoType == Algo_Values::AlgoGlobalType::unknown)
        return result;
    AlgoLogic::ReadLocker contentLocker(getLocker());
    for (InstanceInfoBase* inst : qAsConst(m_mapInstance)) {
        if (!inst || inst->instAlgoType() != algoType)
            continue;
        if (T* typed = dynamic_cast<T*>(inst))
            result.append(typed);
    }
    return result;
}

void InstanceMgr::slotCalculateTimer(QString unused)
{
    Q_UNUSED(unused)
    qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::slotCalculateTimer"
                                      << QStringLiteral("算法逻辑层-浮动盈亏计算触发");
    const QList<T0InstanceInfo*> instances =
        GetInstanceInfoList<T0InstanceInfo>(Algo_Values::AlgoGlobalType::T0);
    CommonQuotaHandler& quotes = CommonQuotaHandler::instance();
    for (T0InstanceInfo* inst : instances) {
        // Legs are never freed while the instance lives, so the pointers stay
        // valid after the walk; the walk itself must not race an insertion.
        QList<T0SymbolInfo*> legs;
        {
            AlgoLogic::ReadLocker contentLocker(getLocker());
            legs = inst->GetAllSymbols_Ptr<T0SymbolInfo>();
        }
        for (T0SymbolInfo* leg : legs) {
            QString symbol;
            {
                AlgoLogic::ReadLocker contentLocker(getLocker());
                symbol = leg->symbol();
            }
            // The quote service may be slow: ask it outside any lock.
            const double price = quotes.GetLatestPrice(symbol, 0);
            AlgoLogic::WriteLocker contentLocker(getLocker());
            const double profit = leg->sellAmount()
                                - (leg->sellDealQty() - leg->buyDealQty()) * price
                                - leg->buyAmount() - leg->buyFee() - leg->sellFee();
            leg->setProfitAmount(profit);
        }
    }
    if (instances.isEmpty())
        return;
    qCDebug(lcAlgoInstance).noquote() << "InstanceMgr::slotCalculateTimer"
                                      << QStringLiteral("算法逻辑层-浮动盈亏计算结束")
                                      << instances.size();
    emit signalCalcProfitAmountFinished();
}
