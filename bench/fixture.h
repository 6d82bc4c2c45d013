#pragma once

// The shared state of the benchmarks: the InstanceMgr registry grown in
// stages (1k, 10k, 100k instances), realistic instances of every class, and
// the server messages the benchmarks route.
//
// The registry holds background instances of every class (40 % Normal with
// one leg, 50 % T0 with two legs, 5 % multi-strategy, 5 % rush-limit-up;
// creators, deleted flags and algo names vary so that every query filter
// selects a real subset) and, for each leg count of kLegCounts, kHotCount
// Normal instances with that many legs that the routing benchmarks address.
// It only grows: the library never frees instances.

#include <algologic.h>

#include "exampleinstances.h"

#include <QString>
#include <QStringList>

#include <array>

namespace Bench {

constexpr std::array<int, 3> kRegistrySizes = {1000, 10000, 100000};
constexpr std::array<int, 3> kLegCounts = {1, 4, 20};
constexpr int kHotCount = 64;

// The login account of the benchmarks; a third of the background instances
// are created by it, a third by another user, a third by nobody.
extern const QString kLogin;

// Catalogue, login account and log filter (library debug output off, as in a
// production terminal). Idempotent.
void setUpHost();

// Warnings and worse the library has logged so far. setUpHost() installs a
// message handler that counts them and prints none: a benchmark that makes
// the library warn reports the count, since logging is not what it measures.
int loggedWarnings();

// Grows the registry to at least `size` instances (hot instances included).
void ensureRegistrySize(int size);
int registrySize();

// The IDs of the hot Normal instances with `legs` legs.
const QStringList& hotIds(int legs);
// The number of T0 legs registered (two per T0 background instance).
int registeredT0Legs();
// The ID of background instance `index` and the class it was given.
QString backgroundId(int index);
ExampleInstances::InstanceClass backgroundClass(int index);

// The security code of leg `index` of a hot instance.
QString legSymbol(int index);

// ---- messages, built with the host's key constants -----------------------

// The figures of every message agree (33000 of 60000 filled per leg), so
// that no benchmark sees a regression another one left behind: a regression
// would be logged as a warning, which is not the cost being measured.

// A progress-gather answer: header plus one record per leg.
VariantMapList progressGatherInput(const QString& id, int legs);
// A strategy report: header plus one ui progress text per leg.
VariantMapList strategyReportInput(const QString& id, int legs);
// A status push: the instance record plus one record per leg.
VariantMapList statusInput(int legs);
// An acknowledged modify push for instance `id` whose parameters list `legs`
// legs (the same legs, so nothing is added).
VariantMapList modifyInput(const QString& id, int legs);
// A query answer: the full record of the instance.
VariantMapList queryInput(const QString& id);
// A progress-gather answer in the form the instance's class reads.
VariantMapList classProgressInput(const QString& id, ExampleInstances::InstanceClass cls);

// The creation record, leg parameters and per-leg results of a Normal
// instance with `legs` legs, as fresh values (nothing shared with another
// instance's record, as when the host parses them off the network).
ExampleInstances::Prototype normalPrototype(const QString& id, int legs);
// `map` deep-copied through JSON text: fresh keys and values.
VariantMap freshCopy(const VariantMap& map);
VariantMapList freshCopy(const VariantMapList& list);

} // namespace Bench
