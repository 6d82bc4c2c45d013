// Every router of InstanceMgr at a given registry size and leg count, against
// the lean floor of the same steps, plus the cost of building the input.

#include "benchmarks.h"
#include "fixture.h"
#include "floors.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using Inputs = std::vector<VariantMapList>;

struct Router
{
    const char* name;
    std::function<VariantMapList(const QString& id, int legs)> input;
    std::function<void(const QString& id, const VariantMapList&)> route;
    std::function<void(const QString& id, const VariantMapList&, Floor::Outputs&)> floor;
};

std::vector<Router> routers()
{
    InstanceMgr* mgr = InstanceMgr::instance();
    return {
        {"progress", Bench::progressGatherInput,
         [mgr](const QString&, const VariantMapList& l) {
             mgr->OnRecv_StrategyProgressGatherResponse(l);
         },
         [](const QString&, const VariantMapList& l, Floor::Outputs& o) {
             Floor::progressGather(l, o);
         }},
        {"delete", Bench::progressGatherInput,
         [mgr](const QString&, const VariantMapList& l) {
             mgr->OnRecv_DeleteAlgoInstanceResponse(l);
         },
         [](const QString&, const VariantMapList& l, Floor::Outputs& o) {
             Floor::progressGather(l, o);
         }},
        {"report", Bench::strategyReportInput,
         [mgr](const QString&, const VariantMapList& l) { mgr->OnRecv_StrategyReportResponse(l); },
         [](const QString&, const VariantMapList& l, Floor::Outputs& o) {
             Floor::strategyReport(l, o);
         }},
        {"status", [](const QString&, int legs) { return Bench::statusInput(legs); },
         [mgr](const QString& id, const VariantMapList& l) {
             benchmark::DoNotOptimize(mgr->OnRecv_InstStatusUpdate(id, l));
         },
         [](const QString& id, const VariantMapList& l, Floor::Outputs& o) {
             Floor::statusUpdate(id, l, o);
         }},
        {"modify", Bench::modifyInput,
         [mgr](const QString& id, const VariantMapList& l) {
             benchmark::DoNotOptimize(mgr->onRecv_InstModifyPush(id, l));
         },
         [](const QString& id, const VariantMapList& l, Floor::Outputs& o) {
             Floor::modifyPush(id, l, o);
         }},
        {"query", [](const QString& id, int) { return Bench::queryInput(id); },
         [mgr](const QString&, const VariantMapList& l) {
             mgr->OnRecv_QueryAlgoStrategyResponse(l);
         },
         [](const QString&, const VariantMapList& l, Floor::Outputs& o) {
             Floor::queryResponse(l, o);
         }},
    };
}

// One input per hot instance: successive iterations address different
// instances, as a stream of answers does.
Inputs inputsFor(const Router& router, int legs)
{
    Inputs inputs;
    for (const QString& id : Bench::hotIds(legs))
        inputs.push_back(router.input(id, legs));
    return inputs;
}

std::string label(const char* kind, const Router& r, int size, int legs)
{
    return std::string(kind) + "route/" + r.name + "/n:" + std::to_string(size)
         + "/legs:" + std::to_string(legs);
}

} // namespace

void registerRoutingBenchmarks(int registrySize)
{
    for (const Router& router : routers()) {
        for (int legs : Bench::kLegCounts) {
            benchmark::RegisterBenchmark(
                label("", router, registrySize, legs).c_str(),
                [router, registrySize, legs](benchmark::State& state) {
                    Bench::ensureRegistrySize(registrySize);
                    const QStringList& ids = Bench::hotIds(legs);
                    const Inputs inputs = inputsFor(router, legs);
                    const int warningsBefore = Bench::loggedWarnings();
                    size_t i = 0;
                    for (auto _ : state) {
                        const size_t k = i++ % inputs.size();
                        router.route(ids.at(int(k)), inputs[k]);
                    }
                    if (Bench::loggedWarnings() > warningsBefore)
                        state.counters["warnings"] = Bench::loggedWarnings() - warningsBefore;
                    state.counters["instances"] = InstanceMgr::instance()
                                                      ->GetInstanceInfoForAllType().size();
                });
            benchmark::RegisterBenchmark(
                label("floor/", router, registrySize, legs).c_str(),
                [router, registrySize, legs](benchmark::State& state) {
                    Bench::ensureRegistrySize(registrySize);
                    Floor::mirrorRegistry();
                    const QStringList& ids = Bench::hotIds(legs);
                    const Inputs inputs = inputsFor(router, legs);
                    size_t i = 0;
                    for (auto _ : state) {
                        const size_t k = i++ % inputs.size();
                        Floor::Outputs out;
                        router.floor(ids.at(int(k)), inputs[k], out);
                        benchmark::DoNotOptimize(out);
                    }
                });
            const std::string name = router.name;
            if (registrySize != Bench::kRegistrySizes.front()
                || (name != "progress" && name != "report" && name != "status"))
                continue;
            // Building the message itself, for scale: not part of any ratio.
            benchmark::RegisterBenchmark(
                ("input/" + name + "/legs:" + std::to_string(legs)).c_str(),
                [router, legs](benchmark::State& state) {
                    const QString id = QStringLiteral("H01-000");
                    for (auto _ : state)
                        benchmark::DoNotOptimize(router.input(id, legs));
                });
        }
    }
}
