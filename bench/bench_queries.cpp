// Every registry query at a given registry size, against a flat index of the
// filter fields (the floor) and, for one query, a walk over a QMap of lean
// instances (the cost of the walk itself). Each benchmark first checks that
// the registry's answer equals the floor's and fails otherwise. Asked again
// and again, a query is answered from the answers the registry keeps; the
// "cold" variants change a filter field before every query, so that each
// answer is walked afresh.

#include "benchmarks.h"
#include "fixture.h"
#include "floors.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace {

using Algo_Values::AlgoGlobalType::all;
using Algo_Values::AlgoGlobalType::T0;

const QString kNormal = QStringLiteral("Normal");
const QStringList kNames = {QStringLiteral("AITWAP"), QStringLiteral("BasisArb")};

struct Query
{
    const char* name;
    std::function<QStringList()> run;
    std::function<QStringList(const Floor::FlatIndex&)> floor;
};

std::vector<Query> queries()
{
    InstanceMgr* mgr = InstanceMgr::instance();
    return {
        {"ids/all", [mgr] { return QStringList(mgr->GetAllInstanceIDs(all)); },
         [](const Floor::FlatIndex& f) { return f.all(); }},
        {"ids/T0", [mgr] { return QStringList(mgr->GetAllInstanceIDs(T0)); },
         [](const Floor::FlatIndex& f) { return f.ofType(T0); }},
        {"live/Normal/mine", [mgr] { return mgr->GetAllInstanceIDsExceptDeleted(kNormal, false); },
         [](const Floor::FlatIndex& f) { return f.live(kNormal, false); }},
        {"live/Normal/everyone",
         [mgr] { return mgr->GetAllInstanceIDsExceptDeleted(kNormal, true); },
         [](const Floor::FlatIndex& f) { return f.live(kNormal, true); }},
        {"liveAllTypes/mine",
         [mgr] { return mgr->GetAllInstanceIDsExceptDeletedForAllType(false); },
         [](const Floor::FlatIndex& f) { return f.liveAllTypes(false); }},
        {"liveAllTypes/everyone",
         [mgr] { return mgr->GetAllInstanceIDsExceptDeletedForAllType(true); },
         [](const Floor::FlatIndex& f) { return f.liveAllTypes(true); }},
        {"names", [mgr] { return mgr->GetInstanceIDsForSpecialAlgoName(kNames); },
         [](const Floor::FlatIndex& f) { return f.withNames(kNames); }},
    };
}

std::string label(const char* kind, const char* name, int size)
{
    return std::string(kind) + "query/" + name + "/n:" + std::to_string(size);
}

} // namespace

void registerQueryBenchmarks(int registrySize)
{
    for (const Query& query : queries()) {
        benchmark::RegisterBenchmark(
            label("", query.name, registrySize).c_str(),
            [query, registrySize](benchmark::State& state) {
                Bench::ensureRegistrySize(registrySize);
                Floor::FlatIndex index;
                index.build();
                const QStringList expected = query.floor(index);
                if (query.run() != expected) {
                    state.SkipWithError("the registry's answer differs from the walk's");
                    return;
                }
                for (auto _ : state)
                    benchmark::DoNotOptimize(query.run());
                state.counters["results"] = expected.size();
            });
        benchmark::RegisterBenchmark(
            label("floor/", query.name, registrySize).c_str(),
            [query, registrySize](benchmark::State& state) {
                Bench::ensureRegistrySize(registrySize);
                Floor::FlatIndex index;
                index.build();
                for (auto _ : state)
                    benchmark::DoNotOptimize(query.floor(index));
            });        // The same query right after a filter field of one instance changed:
        // the kept answers are dropped, the index takes the change and the
        // answer is walked again.
        benchmark::RegisterBenchmark(
            label("", (std::string(query.name) + "/cold").c_str(), registrySize).c_str(),
            [query, registrySize](benchmark::State& state) {
                Bench::ensureRegistrySize(registrySize);
                InstanceMgr* mgr = InstanceMgr::instance();
                InstanceInfoBase* inst =
                    mgr->GetInstanceInfoForAllType().value(Bench::hotIds(20).first());
                const QString creators[] = {Bench::kLogin, QStringLiteral("trader02")};
                int flip = 0;
                for (auto _ : state) {
                    {
                        AlgoLogic::WriteLocker locker(mgr->getLocker());
                        inst->setCreateUser(creators[++flip % 2]);
                    }
                    benchmark::DoNotOptimize(query.run());
                }
                AlgoLogic::WriteLocker locker(mgr->getLocker());
                inst->setCreateUser(Bench::kLogin);
            });
        benchmark::RegisterBenchmark(
            label("floor/", (std::string(query.name) + "/cold").c_str(), registrySize).c_str(),
            [query, registrySize](benchmark::State& state) {
                Bench::ensureRegistrySize(registrySize);
                Floor::FlatIndex index;
                index.build();
                for (auto _ : state)
                    benchmark::DoNotOptimize(query.floor(index));
            });
    }
    benchmark::RegisterBenchmark(
        label("ref/", "live/Normal/mine/qmap-walk", registrySize).c_str(),
        [registrySize](benchmark::State& state) {
            Bench::ensureRegistrySize(registrySize);
            Floor::mirrorRegistry();
            for (auto _ : state)
                benchmark::DoNotOptimize(Floor::mapWalkLive(kNormal, false));
        });

    // Single-instance lookups.
    benchmark::RegisterBenchmark(
        label("", "algoTypeByInstID", registrySize).c_str(),
        [registrySize](benchmark::State& state) {
            Bench::ensureRegistrySize(registrySize);
            const QStringList& ids = Bench::hotIds(4);
            InstanceMgr* mgr = InstanceMgr::instance();
            int i = 0;
            for (auto _ : state)
                benchmark::DoNotOptimize(mgr->GetAlgoTypeByInstID(ids.at(i++ % ids.size())));
        });
    benchmark::RegisterBenchmark(
        label("floor/", "algoTypeByInstID", registrySize).c_str(),
        [registrySize](benchmark::State& state) {
            Bench::ensureRegistrySize(registrySize);
            Floor::mirrorRegistry();
            const QStringList& ids = Bench::hotIds(4);
            int i = 0;
            for (auto _ : state) {
                const Floor::Instance* inst = Floor::find(ids.at(i++ % ids.size()));
                AlgoLogic::ReadLocker locker(&Floor::contentLock());
                benchmark::DoNotOptimize(QString(inst->algoType));
            }
        });
    benchmark::RegisterBenchmark(
        label("", "symbolInfo", registrySize).c_str(),
        [registrySize](benchmark::State& state) {
            Bench::ensureRegistrySize(registrySize);
            const QStringList& ids = Bench::hotIds(4);
            QStringList keys;
            for (const QString& id : ids)
                keys.append(id % QLatin1Char('_') % Bench::legSymbol(2) % QStringLiteral("_1"));
            InstanceMgr* mgr = InstanceMgr::instance();
            int i = 0;
            for (auto _ : state) {
                SymbolInfoBase* leg = mgr->getSymbolInfo(keys.at(i++ % keys.size()));
                if (!leg)
                    state.SkipWithError("leg not found");
                benchmark::DoNotOptimize(leg);
            }
        });
    benchmark::RegisterBenchmark(
        label("floor/", "symbolInfo", registrySize).c_str(),
        [registrySize](benchmark::State& state) {
            Bench::ensureRegistrySize(registrySize);
            Floor::mirrorRegistry();
            const QStringList& ids = Bench::hotIds(4);
            QStringList keys;
            for (const QString& id : ids)
                keys.append(id % QLatin1Char('_') % Bench::legSymbol(2) % QStringLiteral("_1"));
            int i = 0;
            for (auto _ : state) {
                const QString& key = keys.at(i++ % keys.size());
                const Floor::Instance* inst = Floor::find(key.left(key.indexOf(QLatin1Char('_'))));
                AlgoLogic::ReadLocker locker(&Floor::contentLock());
                benchmark::DoNotOptimize(inst->legs.value(key, nullptr));
            }
        });
}

void registerTickBenchmarks()
{
    benchmark::RegisterBenchmark("tick/t0", [](benchmark::State& state) {
        Bench::ensureRegistrySize(10000);
        InstanceMgr* mgr = InstanceMgr::instance();
        for (auto _ : state)
            mgr->slotCalculateTimer(QString());
        state.counters["legs"] = Bench::registeredT0Legs();
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("floor/tick/t0", [](benchmark::State& state) {
        Bench::ensureRegistrySize(10000);
        Floor::mirrorRegistry();
        int legs = 0;
        for (auto _ : state)
            legs = Floor::t0Tick();
        state.counters["legs"] = legs;
    })->Unit(benchmark::kMillisecond);
}
