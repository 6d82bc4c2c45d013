// Heap retained per registered instance and per leg, for every instance
// class, measured as the growth of the heap in use (glibc mallinfo2, which
// sees Qt's own allocations as well as operator new) while instances are
// created from freshly parsed records, as a host does, and the records are
// dropped again. The figures are set beside the reference footprint
// (3.6 KB per instance, 2.3 KB per leg).

#include "benchmarks.h"
#include "fixture.h"

#include <QJsonDocument>

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <string>
#include <vector>

namespace {

using ExampleInstances::InstanceClass;
namespace C = Algo_Fields::AlgoInstContentInfo;

constexpr int kInstances = 400;
constexpr double kReferenceInstanceBytes = 3600.0;
constexpr double kReferenceLegBytes = 2300.0;

size_t heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

const char* className(InstanceClass cls)
{
    switch (cls) {
    case InstanceClass::Normal:
        return "Normal";
    case InstanceClass::T0:
        return "T0";
    case InstanceClass::Multi:
        return "MultiStr";
    default:
        return "RushLimitUp";
    }
}

// The prototype of `cls` with `extraLegs` more securities in its parameters
// (Normal and T0 only), with fresh values throughout.
ExampleInstances::Prototype freshPrototype(InstanceClass cls, const QString& id, int extraLegs)
{
    if (cls == InstanceClass::Normal)
        return Bench::normalPrototype(id, 1 + extraLegs);
    ExampleInstances::Prototype p = ExampleInstances::prototype(cls, id);
    if (extraLegs > 0 && cls == InstanceClass::T0) {
        QVariantList legs = p.params.value(C::SymbolParamKey).toList();
        const VariantMap legTemplate = legs.value(0).toMap();
        for (int i = 0; i < extraLegs; ++i) {
            VariantMap leg = legTemplate;
            leg.insert(C::Symbol, Bench::legSymbol(i));
            legs.append(leg);
            p.extRecords.append({{Tessel_Fields::System::requestExeStatus, QStringLiteral("0")},
                                 {Tessel_Fields::Security::symbol, Bench::legSymbol(i)},
                                 {Tessel_Fields::Strategy::strategyStatus, QStringLiteral("1")}});
        }
        p.params.insert(C::SymbolParamKey, legs);
        p.record.insert(Tessel_Fields::Strategy::strategyParas,
                        QString::fromUtf8(QJsonDocument::fromVariant(p.params)
                                              .toJson(QJsonDocument::Compact)));
    }
    p.record = Bench::freshCopy(p.record);
    p.params = Bench::freshCopy(p.params);
    p.extRecords = Bench::freshCopy(p.extRecords);
    return p;
}

struct Footprint
{
    double bytesPerInstance = 0.0;
    int legsPerInstance = 0;
};

// Registers kInstances instances, measures, then forgets them again so that
// the registry sizes of the later stages stay exact.
Footprint measure(InstanceClass cls, int extraLegs, int& serial)
{
    InstanceMgr* mgr = InstanceMgr::instance();
    QStringList ids;
    // A query brings the registry's query index up to date, so that its
    // entries for the new instances are counted too.
    mgr->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::all);
    const size_t before = heapInUse();
    int legs = 0;
    {
        std::vector<ExampleInstances::Prototype> inputs;
        for (int i = 0; i < kInstances; ++i) {
            ids.append(QStringLiteral("MEM%1").arg(serial++, 6, 10, QLatin1Char('0')));
            inputs.push_back(freshPrototype(cls, ids.last(), extraLegs));
        }
        for (const ExampleInstances::Prototype& p : inputs) {
            InstanceInfoBase* inst = mgr->CreateInstance(p.algoType, p.record, p.algoName);
            AlgoLogic::WriteLocker locker(mgr->getLocker());
            mgr->UpdateSymbolExtInfoByParams(inst, p.params, p.extRecords);
            legs = inst->getSymbolSize();
        }
    }
    mgr->GetAllInstanceIDs(Algo_Values::AlgoGlobalType::all);
    const size_t after = heapInUse();
    for (const QString& id : ids)
        mgr->DeleteInstance(id);
    return {double(after - before) / kInstances, legs};
}

} // namespace

void registerMemoryBenchmarks()
{
    for (InstanceClass cls : {InstanceClass::Normal, InstanceClass::T0, InstanceClass::Multi,
                              InstanceClass::RushLimitUp}) {
        const bool legsVary = cls == InstanceClass::Normal || cls == InstanceClass::T0;
        benchmark::RegisterBenchmark(
            ("mem/" + std::string(className(cls))).c_str(),
            [cls, legsVary](benchmark::State& state) {
                Bench::setUpHost();
                static int serial = 0;
                Footprint base;
                Footprint more;
                for (auto _ : state) {
                    base = measure(cls, 0, serial);
                    if (legsVary)
                        more = measure(cls, 20, serial);
                }
                const double perLeg =
                    legsVary ? (more.bytesPerInstance - base.bytesPerInstance)
                                   / (more.legsPerInstance - base.legsPerInstance)
                             : 0.0;
                // The instance's own share: what it costs beyond its legs.
                const double legsShare = legsVary ? perLeg * base.legsPerInstance : 0.0;
                state.counters["instance_bytes"] = base.bytesPerInstance - legsShare;
                state.counters["instance_bytes_with_legs"] = base.bytesPerInstance;
                state.counters["legs"] = base.legsPerInstance;
                state.counters["instance_reference"] = kReferenceInstanceBytes;
                if (legsVary) {
                    state.counters["leg_bytes"] = perLeg;
                    state.counters["leg_reference"] = kReferenceLegBytes;
                }
            })
            ->Iterations(1);
    }
}
