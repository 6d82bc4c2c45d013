#pragma once

// The instance class of T0 (intraday buy-and-sell-back) algos. It keeps three
// plan fields of its own, builds its legs as T0SymbolInfo from the T0
// parameter list (whose per-leg fields carry Chinese labels as keys), always
// with the side "All", and reads the progress-gather answer as a JSON list of
// per-symbol records that it hands to the legs.

#include "instance/instanceinfobase.h"

class ALGOLOGIC_EXPORT T0InstanceInfo : public InstanceInfoBase
{
public:
    T0InstanceInfo();
    T0InstanceInfo(const T0InstanceInfo& other);
    T0InstanceInfo(T0InstanceInfo&& other);
    T0InstanceInfo& operator=(const T0InstanceInfo& other);
    T0InstanceInfo& operator=(T0InstanceInfo&& other);
    ~T0InstanceInfo() override;

    // Record 0's strategyReport is a JSON list of per-symbol records; each
    // goes to the leg of its symbol. A record without symbol ends the walk;
    // a complete walk on an instance in a final status marks progress final.
    void OnRecv_StrategyProgressGatherResponse(const VariantMapList& records) override;

    // `content` holds the T0 parameter list under SymbolParamKey and the plan
    // fields; `legStates` the per-leg results (parent order ID and status)
    // keyed by symbol key. Existing T0 legs are updated in place.
    void initSymbolInfo(const VariantMap& content, const VariantMap& legStates) override;

    QString getT0StartTime() const { return m_t0StartTime; }
    void setT0StartTime(const QString& time) { m_t0StartTime = time; }

    QString getT0EndTime() const { return m_t0EndTime; }
    void setT0EndTime(const QString& time) { m_t0EndTime = time; }

    QString getOccupyAmount() const { return m_occupyAmount; }
    void setOccupyAmount(const QString& amount) { m_occupyAmount = amount; }

private:
    QString m_t0StartTime;
    QString m_t0EndTime;
    QString m_occupyAmount;
};
