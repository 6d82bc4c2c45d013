#pragma once

// Internal to the library.
//
// An index of the fields the registry's list queries filter on, so that a
// query reads one compact array in instance-ID order instead of every
// instance object: per registry entry its key, its instanceID(), the object,
// and its algo type, creator and strategy name (each text interned to a
// number) and whether it is deleted.
//
// Consistency. The indexed fields live in the instances. They change inside
// handlers run by the routers under the content lock for writing, through
// the public setters (the host holds the content lock), or before an object
// is registered; the registry's set of entries changes under the registry
// lock for writing. Every such change is recorded here: noteFieldsChanged()
// by the instance code that writes a field, noteKeyChanged() by the registry.
// Recording only takes a leaf mutex. The recorded changes are applied when a
// query next runs, while that query holds the registry lock and the content
// lock for reading: then no router, setter or registry change can be under
// way, so the fields re-read are exactly those the walk over the registry
// would read, and every answer equals the walk's.
//
// Objects of the library's own instance classes record their changes
// themselves. Objects of other classes (a host's subclass may write the
// protected members directly) are watched by the routers instead: see
// FilterFieldsWatch.
//
// Answers. A user interface asks the same few questions over and over while
// the filter fields rarely change, so the last few answers are kept and
// returned (shared, in constant time) until a recorded change reaches the
// index; then they are dropped and the next answers are walked again.
//
// Thread safety: the record functions take a leaf mutex of their own;
// queries, which may run in several reader threads at once, serialise on the
// index's mutex.
//
// Memory: about sixty bytes per registered instance; the interned texts
// are rebuilt when they outnumber the entries; the kept answers share their
// texts with the index (a pointer per ID, kMemoSize answers at most); past a
// bound the pending records collapse into "rebuild everything".

#include "platform/varianttypes.h"

#include <QHash>
#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

class InstanceInfoBase;

class InstanceFilterIndex
{
public:
    // The index of InstanceMgr's registry (there is one registry).
    static InstanceFilterIndex& registryIndex();

    // Records that a filter field of `inst` may have changed. Any thread,
    // any locks held (the mutex taken is a leaf).
    static void noteFieldsChanged(const InstanceInfoBase* inst);
    // Forgets a pending record of `inst` (called when it is destroyed).
    static void forget(const InstanceInfoBase* inst);
    // Records that the registry entry under `key` was added, replaced or
    // removed. REQUIRES: the registry lock held for writing.
    static void noteKeyChanged(const QString& key);

    // ---- queries ----------------------------------------------------------
    // REQUIRES for each: the registry lock (read or write) and the content
    // lock for reading held by the caller; `registry` is the registry's map.
    // Results come in registry-key order, as instanceID() of each entry.

    // Entries of `algoType`, or every entry when `anyType`.
    QList<QString> ids(const QMap<QString, InstanceInfoBase*>& registry, const QString& algoType,
                       bool anyType);
    // Entries not deleted, of `algoType` unless `anyType`, created by nobody
    // or by `login` unless `allCreators`.
    QStringList liveIds(const QMap<QString, InstanceInfoBase*>& registry,
                        const QString& algoType, bool anyType, bool allCreators,
                        const QString& login);
    // Entries whose strategy name is one of `names`.
    QStringList idsWithNames(const QMap<QString, InstanceInfoBase*>& registry,
                             const QStringList& names);
    // The objects of `algoType`.
    QList<InstanceInfoBase*> instancesOfType(const QMap<QString, InstanceInfoBase*>& registry,
                                             const QString& algoType);

private:
    struct Entry
    {
        QString key;
        QString id;
        InstanceInfoBase* inst;
        int type;
        int creator;
        int name;
        bool deleted;
    };

    // Applies the recorded changes, dropping the kept answers if there were
    // any. REQUIRES: m_mutex and the query's locks.
    void update(const QMap<QString, InstanceInfoBase*>& registry);
    // The kept answer to `question`, or null. REQUIRES: m_mutex.
    const QStringList* kept(const QString& question) const;
    // Keeps `answer` to `question` and returns it. REQUIRES: m_mutex.
    QStringList keep(const QString& question, const QStringList& answer);
    void rebuild(const QMap<QString, InstanceInfoBase*>& registry);
    void updateKey(const QString& key, InstanceInfoBase* inst);
    Entry entryFor(const QString& key, InstanceInfoBase* inst);
    void addKeyOf(const InstanceInfoBase* inst, const QString& key);
    void removeKeyOf(const InstanceInfoBase* inst, const QString& key);
    QList<QString> keysOf(const InstanceInfoBase* inst) const;
    int intern(const QString& text);
    // The number of `text`, or -1 when no entry holds it.
    int lookup(const QString& text) const { return m_texts.value(text, -1); }

    QMutex m_mutex; // serialises queries over the members below
    std::vector<Entry> m_entries;                           // ordered by key
    // Object -> the keys it is registered under, as (object, key) pairs in
    // ascending order: a sorted array costs a third of a hash per entry.
    using KeyOf = std::pair<const InstanceInfoBase*, QString>;
    std::vector<KeyOf> m_keysOf;
    QHash<QString, int> m_texts;                            // interned texts
    bool m_built = false;
    struct Answer
    {
        QString question;
        QStringList ids;
    };
    static constexpr int kMemoSize = 8;
    std::vector<Answer> m_answers; // the last answers, newest last
};

// Used by the routers around an instance handler: when the object is not of
// one of the library's own instance classes, remembers its filter fields and
// records a change with the index if the handler changed them. Destroy it
// before the content lock is released, so that no query can run in between.
class FilterFieldsWatch
{
public:
    explicit FilterFieldsWatch(const InstanceInfoBase* inst);
    ~FilterFieldsWatch();
    FilterFieldsWatch(const FilterFieldsWatch&) = delete;
    FilterFieldsWatch& operator=(const FilterFieldsWatch&) = delete;

private:
    QStringList fields() const;

    const InstanceInfoBase* m_inst = nullptr; // null: a library class, not watched
    QStringList m_before;
};
