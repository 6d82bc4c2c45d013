#pragma once

// Internal to the library (not exported): the registry makes it for the
// feature algo type.
//
// The instance class of the rush-limit-up algos: one security, one buy leg,
// and progress reports that carry queue-position data (how much is queued in
// front of the order at the limit price). The leg is always keyed with the
// side "Buy", whatever side the parameters give; that side is still stored as
// the leg's order side.

#include "instance/instanceinfobase.h"

class RushLimitUpInstanceInfo : public InstanceInfoBase
{
public:
    RushLimitUpInstanceInfo();
    ~RushLimitUpInstanceInfo() override;

    // Report texts parsed one by one; the readable ones are merged in
    // timestamp order (latest wins) and applied to the leg. Records this
    // instance in `changed` with an empty key list. `flag` is not used.
    void OnRecvInstProgressInfo(const QList<QString>& reports, const bool& flag,
                                QMap<QString, QList<QString>>& changed) override;
    // An acknowledged modification takes the parameters and the status;
    // every push is announced.
    void OnRecv_InstModifyPush(const VariantMapList& records) override;
    // The leg's targets and the instance comment from the parameter text.
    void UpdateParamMap(const QString& json) override;
    // Builds the one leg from the lower-camel parameter keys. `extInfo` is
    // not read.
    void initSymbolInfo(const VariantMap& params, const VariantMap& extInfo) override;

    // The other overload keeps the base behaviour.
    using InstanceInfoBase::OnRecvInstProgressInfo;
};
