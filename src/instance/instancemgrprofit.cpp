// The periodic recalculation of the floating profit of T0 legs.

#include "instance/instancemgr.h"
#include "common/locking.h"

#include "common/logging.h"
#include "instance/instancefilterindex.h"
#include "instance/instanceinfobase.h"
#include "platform/algodefines.h"
#include "platform/quotehandler.h"
#include "symbol/t0symbolinfo.h"
#include "variants/t0instanceinfo.h"

#include <algorithm>
#include <vector>

template <typename T>
QList<T*> InstanceMgr::GetInstanceInfoList(const QString& algoType)
{
    QList<T*> result;
    AlgoLogic::ReadLocker registryLocker(&m_lockInstance);
    if (algoType == Algo_Values::AlgoGlobalType::unknown)
        return result;
    AlgoLogic::ReadLocker contentLocker(getLocker());
    // The index lists the registry's objects of the type in ID order.
    const QList<InstanceInfoBase*> ofType =
        InstanceFilterIndex::registryIndex().instancesOfType(m_mapInstance, algoType);
    for (InstanceInfoBase* inst : ofType) {
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
    struct LegQuote
    {
        T0SymbolInfo* leg;
        QString symbol;
    };
    // The instances are taken a batch at a time: one read section collects
    // the legs and symbols of the batch, short enough not to hold a writer
    // up for long, and saves a lock round trip per instance. Legs are never
    // freed while their instance lives, so the pointers stay valid after it.
    constexpr int kBatch = 64;
    std::vector<LegQuote> legs;
    for (int first = 0; first < instances.size(); first += kBatch) {
        legs.clear();
        {
            AlgoLogic::ReadLocker contentLocker(getLocker());
            const int end = std::min(first + kBatch, int(instances.size()));
            for (int i = first; i < end; ++i) {
                for (T0SymbolInfo* leg : instances.at(i)->GetAllSymbols_Ptr<T0SymbolInfo>())
                    legs.push_back({leg, leg->symbol()});
            }
        }
        for (const LegQuote& quote : legs) {
            // The quote service may be slow: ask it outside any lock.
            const double price = quotes.GetLatestPrice(quote.symbol, 0);
            AlgoLogic::WriteLocker contentLocker(getLocker());
            T0SymbolInfo* leg = quote.leg;
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
