#pragma once

// Internal to the library.
//
// The parts of a symbol key ("instanceID_symbol_side") exactly as InstanceMgr's
// splitting operations define them: the key split on "_" with empty parts
// kept, parts beyond the third ignored, each part available only when the
// key has enough parts. The separators are found in one scan of the key, so
// a part costs one substring instead of a list of every part.

#include <QString>

namespace AlgoLogic {

class SymbolKeyParts
{
public:
    explicit SymbolKeyParts(const QString& key)
        : m_key(key)
        , m_first(key.indexOf(QLatin1Char('_')))
        , m_second(m_first < 0 ? -1 : key.indexOf(QLatin1Char('_'), m_first + 1))
        , m_third(m_second < 0 ? -1 : key.indexOf(QLatin1Char('_'), m_second + 1))
    {
    }

    // Part 0 of a key with at least 2 parts, else a null text.
    QString instanceID() const { return m_first < 0 ? QString() : m_key.left(m_first); }
    // Part 1 of a key with at least 2 parts, else a null text.
    QString symbol() const { return m_first < 0 ? QString() : between(m_first, m_second); }
    // Part 2 of a key with at least 3 parts, else a null text.
    QString side() const { return m_second < 0 ? QString() : between(m_second, m_third); }
    // Parts 1 and 2 joined by "_" for a key with at least 3 parts, else a
    // null text.
    QString symbolSide() const { return m_second < 0 ? QString() : between(m_first, m_third); }

private:
    // The text after the separator at `from`, up to the one at `to` (-1: the end).
    QString between(int from, int to) const
    {
        return m_key.mid(from + 1, (to < 0 ? m_key.size() : to) - from - 1);
    }

    const QString& m_key;
    int m_first;
    int m_second;
    int m_third;
};

} // namespace AlgoLogic
