#include "instance/instancefilterindex.h"

#include "common/locking.h"
#include "instance/instanceinfobase.h"
#include "platform/algodefines.h"
#include "variants/RushLimitUpInstanceInfo.h"
#include "variants/multiinstanceinfo.h"
#include "variants/t0instanceinfo.h"

#include <QSet>

#include <algorithm>
#include <functional>
#include <typeinfo>

namespace {

// Changes recorded since the last query, guarded by `mutex` (a leaf lock:
// nothing else is taken while it is held). Past kMaxPending records the
// individual records are dropped for one flag that makes the next query
// rebuild the index, so that a host that changes much and asks nothing does
// not make them grow without bound.
struct Pending
{
    QMutex mutex;
    QSet<const InstanceInfoBase*> instances;
    QSet<QString> keys;
    bool everything = false;
};

constexpr int kMaxPending = 1 << 16;

// REQUIRES: p.mutex held.
void capPending(Pending& p)
{
    if (p.instances.size() + p.keys.size() <= kMaxPending)
        return;
    p.instances.clear();
    p.keys.clear();
    p.everything = true;
}

Pending& pending()
{
    static Pending* const s_pending = new Pending;
    return *s_pending;
}

bool isDeleted(const InstanceInfoBase* inst)
{
    return inst->getStrategyDeleted() == Algo_Values::AlgoDeleteStatus::deleted;
}

bool keyLess(const QString& left, const QString& right)
{
    return left < right;
}

bool objectLess(const InstanceInfoBase* left, const InstanceInfoBase* right)
{
    return std::less<const InstanceInfoBase*>()(left, right);
}

// The order of the (object, key) pairs: by object, then by key.
bool keyOfLess(const std::pair<const InstanceInfoBase*, QString>& a,
               const std::pair<const InstanceInfoBase*, QString>& b)
{
    return a.first != b.first ? objectLess(a.first, b.first) : keyLess(a.second, b.second);
}

// At most this many registry entries added or removed are applied one by
// one (each moves the arrays' tails); more are cheaper in one rebuild.
constexpr int kMaxKeyChanges = 32;

} // namespace

InstanceFilterIndex& InstanceFilterIndex::registryIndex()
{
    static InstanceFilterIndex* const s_index = new InstanceFilterIndex;
    return *s_index;
}

void InstanceFilterIndex::noteFieldsChanged(const InstanceInfoBase* inst)
{
    Pending& p = pending();
    AlgoLogic::MutexLocker locker(&p.mutex);
    if (p.everything)
        return;
    p.instances.insert(inst);
    capPending(p);
}

void InstanceFilterIndex::forget(const InstanceInfoBase* inst)
{
    Pending& p = pending();
    AlgoLogic::MutexLocker locker(&p.mutex);
    p.instances.remove(inst);
}

void InstanceFilterIndex::noteKeyChanged(const QString& key)
{
    Pending& p = pending();
    AlgoLogic::MutexLocker locker(&p.mutex);
    if (p.everything)
        return;
    p.keys.insert(key);
    capPending(p);
}

int InstanceFilterIndex::intern(const QString& text)
{
    const auto it = m_texts.constFind(text);
    if (it != m_texts.constEnd())
        return it.value();
    const int number = m_texts.size();
    m_texts.insert(text, number);
    return number;
}

InstanceFilterIndex::Entry InstanceFilterIndex::entryFor(const QString& key, InstanceInfoBase* inst)
{
    return {key,
            inst->instanceID(),
            inst,
            intern(inst->instAlgoType()),
            intern(inst->getCreateUser()),
            intern(inst->strategyName()),
            isDeleted(inst)};
}

void InstanceFilterIndex::addKeyOf(const InstanceInfoBase* inst, const QString& key)
{
    const KeyOf item(inst, key);
    const auto it = std::lower_bound(m_keysOf.begin(), m_keysOf.end(), item, keyOfLess);
    if (it == m_keysOf.end() || *it != item)
        m_keysOf.insert(it, item);
}

void InstanceFilterIndex::removeKeyOf(const InstanceInfoBase* inst, const QString& key)
{
    const KeyOf item(inst, key);
    const auto it = std::lower_bound(m_keysOf.begin(), m_keysOf.end(), item, keyOfLess);
    if (it != m_keysOf.end() && *it == item)
        m_keysOf.erase(it);
}

QList<QString> InstanceFilterIndex::keysOf(const InstanceInfoBase* inst) const
{
    QList<QString> keys;
    auto it = std::lower_bound(m_keysOf.begin(), m_keysOf.end(), inst,
                               [](const KeyOf& a, const InstanceInfoBase* b) {
                                   return objectLess(a.first, b);
                               });
    for (; it != m_keysOf.end() && it->first == inst; ++it)
        keys.append(it->second);
    return keys;
}

void InstanceFilterIndex::rebuild(const QMap<QString, InstanceInfoBase*>& registry)
{
    m_entries.clear();
    m_keysOf.clear();
    m_texts.clear();
    m_entries.reserve(size_t(registry.size()));
    m_keysOf.reserve(size_t(registry.size()));
    for (auto it = registry.cbegin(); it != registry.cend(); ++it) {
        if (!it.value())
            continue; // never inserted; the walk skips it too
        m_entries.push_back(entryFor(it.key(), it.value()));
        m_keysOf.emplace_back(it.value(), it.key());
    }
    std::sort(m_keysOf.begin(), m_keysOf.end(), keyOfLess);
    m_built = true;
}

void InstanceFilterIndex::updateKey(const QString& key, InstanceInfoBase* inst)
{
    const auto it = std::lower_bound(
        m_entries.begin(), m_entries.end(), key,
        [](const Entry& e, const QString& k) { return keyLess(e.key, k); });
    const bool found = it != m_entries.end() && it->key == key;
    if (found && it->inst == inst) {
        *it = entryFor(key, inst); // the same object: only its fields are new
        return;
    }
    if (found)
        removeKeyOf(it->inst, key);
    if (!inst) {
        if (found)
            m_entries.erase(it);
        return;
    }
    if (found)
        *it = entryFor(key, inst);
    else
        m_entries.insert(it, entryFor(key, inst));
    addKeyOf(inst, key);
}

void InstanceFilterIndex::update(const QMap<QString, InstanceInfoBase*>& registry)
{
    QSet<const InstanceInfoBase*> instances;
    QSet<QString> keys;
    bool everything = false;
    {
        Pending& p = pending();
        AlgoLogic::MutexLocker locker(&p.mutex);
        instances.swap(p.instances);
        keys.swap(p.keys);
        everything = p.everything;
        p.everything = false;
    }
    const size_t changes = size_t(instances.size()) + size_t(keys.size());
    if (changes > 0 || everything)
        m_answers.clear();
    // Many changes (a registry being filled) or stale interned texts: one
    // pass over the registry is cheaper than one search per change.
    if (!m_built || everything || keys.size() > kMaxKeyChanges
        || changes > m_entries.size() / 8 + 64
        || size_t(m_texts.size()) > 4 * m_entries.size() + 1024) {
        rebuild(registry);
        return;
    }
    for (const QString& key : qAsConst(keys))
        updateKey(key, registry.value(key, nullptr));
    for (const InstanceInfoBase* inst : qAsConst(instances)) {
        // Only objects the registry holds are read; others may be gone.
        const QList<QString> keysOfInst = keysOf(inst);
        for (const QString& key : keysOfInst)
            updateKey(key, registry.value(key, nullptr));
    }
}

const QStringList* InstanceFilterIndex::kept(const QString& question) const
{
    for (const Answer& answer : m_answers) {
        if (answer.question == question)
            return &answer.ids;
    }
    return nullptr;
}

QStringList InstanceFilterIndex::keep(const QString& question, const QStringList& answer)
{
    if (m_answers.size() >= size_t(kMemoSize))
        m_answers.erase(m_answers.begin());
    m_answers.push_back({question, answer});
    return answer;
}

namespace {

// A question as one text: its kind and arguments, each preceded by its
// length, so that different arguments never give the same text.
QString question(const QStringList& parts)
{
    QString text;
    for (const QString& part : parts)
        text += QString::number(part.size()) % QLatin1Char(':') % part;
    return text;
}

QString flag(bool value)
{
    return value ? QStringLiteral("1") : QStringLiteral("0");
}

} // namespace

QList<QString> InstanceFilterIndex::ids(const QMap<QString, InstanceInfoBase*>& registry,
                                        const QString& algoType, bool anyType)
{
    AlgoLogic::MutexLocker locker(&m_mutex);
    update(registry);
    const QString asked = question({QStringLiteral("ids"), algoType, flag(anyType)});
    if (const QStringList* answer = kept(asked))
        return *answer;
    QStringList result;
    const int type = anyType ? -1 : lookup(algoType);
    if (!anyType && type < 0)
        return result;
    for (const Entry& e : m_entries) {
        if (anyType || e.type == type)
            result.append(e.id);
    }
    return keep(asked, result);
}

QStringList InstanceFilterIndex::liveIds(const QMap<QString, InstanceInfoBase*>& registry,
                                         const QString& algoType, bool anyType, bool allCreators,
                                         const QString& login)
{
    AlgoLogic::MutexLocker locker(&m_mutex);
    update(registry);
    const QString asked = question({QStringLiteral("live"), algoType, flag(anyType),
                                    flag(allCreators), allCreators ? QString() : login});
    if (const QStringList* answer = kept(asked))
        return *answer;
    QStringList result;
    const int type = anyType ? -1 : lookup(algoType);
    if (!anyType && type < 0)
        return keep(asked, result);
    const int nobody = lookup(QString());
    const int loginNumber = lookup(login);
    for (const Entry& e : m_entries) {
        if (e.deleted || (!anyType && e.type != type))
            continue;
        if (!allCreators && e.creator != nobody && e.creator != loginNumber)
            continue;
        result.append(e.id);
    }
    return keep(asked, result);
}

QStringList InstanceFilterIndex::idsWithNames(const QMap<QString, InstanceInfoBase*>& registry,
                                              const QStringList& names)
{
    AlgoLogic::MutexLocker locker(&m_mutex);
    update(registry);
    QStringList parts{QStringLiteral("names")};
    parts.append(names);
    const QString asked = question(parts);
    if (const QStringList* answer = kept(asked))
        return *answer;
    std::vector<bool> wanted(size_t(m_texts.size()), false);
    bool any = false;
    for (const QString& name : names) {
        const int number = lookup(name);
        if (number >= 0) {
            wanted[size_t(number)] = true;
            any = true;
        }
    }
    QStringList result;
    if (any) {
        for (const Entry& e : m_entries) {
            if (wanted[size_t(e.name)])
                result.append(e.id);
        }
    }
    return keep(asked, result);
}

QList<InstanceInfoBase*>
InstanceFilterIndex::instancesOfType(const QMap<QString, InstanceInfoBase*>& registry,
                                     const QString& algoType)
{
    AlgoLogic::MutexLocker locker(&m_mutex);
    update(registry);
    QList<InstanceInfoBase*> result;
    const int type = lookup(algoType);
    if (type < 0)
        return result;
    for (const Entry& e : m_entries) {
        if (e.type == type)
            result.append(e.inst);
    }
    return result;
}

// ---- FilterFieldsWatch ---------------------------------------------------------

FilterFieldsWatch::FilterFieldsWatch(const InstanceInfoBase* inst)
{
    if (!inst)
        return;
    const std::type_info& type = typeid(*inst);
    if (type == typeid(InstanceInfoBase) || type == typeid(T0InstanceInfo)
        || type == typeid(MultiInstanceInfo) || type == typeid(RushLimitUpInstanceInfo))
        return;
    m_inst = inst;
    m_before = fields();
}

FilterFieldsWatch::~FilterFieldsWatch()
{
    if (m_inst && fields() != m_before)
        InstanceFilterIndex::noteFieldsChanged(m_inst);
}

QStringList FilterFieldsWatch::fields() const
{
    return {m_inst->instanceID(), m_inst->instAlgoType(), m_inst->getCreateUser(),
            m_inst->strategyName(), m_inst->getStrategyDeleted()};
}
