#include "models/snapshottablemodel.h"

#include "instance/instancemgr.h"

#include <QMetaObject>
#include <QSet>

#include <algorithm>

namespace {

bool isNumber(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::Double:
    case QMetaType::Int:
    case QMetaType::LongLong:
        return true;
    default:
        return false;
    }
}

} // namespace

SnapshotTableModel::SnapshotTableModel(const QStringList& headers, QObject* parent)
    : QAbstractTableModel(parent)
    , m_headers(headers)
{
}

int SnapshotTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int SnapshotTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_headers.size();
}

QVariant SnapshotTableModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return QVariant();
    const SnapshotCell& cell = m_rows.at(index.row()).at(std::size_t(index.column()));
    switch (role) {
    case Qt::DisplayRole:
        return cell.text;
    case Qt::ToolTipRole:
        return cell.toolTip.isEmpty() ? QVariant() : QVariant(cell.toolTip);
    case Qt::TextAlignmentRole:
        return int(Qt::AlignVCenter | (isNumber(cell.value) ? Qt::AlignRight : Qt::AlignLeft));
    case SortRole:
        return cell.value;
    case KeyRole:
        return m_keys.at(index.row());
    default:
        return QVariant();
    }
}

QVariant SnapshotTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0
        && section < m_headers.size())
        return m_headers.at(section);
    return QAbstractTableModel::headerData(section, orientation, role);
}

QString SnapshotTableModel::keyAt(int row) const
{
    return row >= 0 && row < m_keys.size() ? m_keys.at(row) : QString();
}

int SnapshotTableModel::rowOfKey(const QString& key) const
{
    return m_rowOf.value(key, -1);
}

void SnapshotTableModel::syncRows(const QStringList& keys, const QHash<QString, Row>& fresh)
{
    QStringList target;
    QSet<QString> targetSet;
    target.reserve(keys.size());
    for (const QString& key : keys) {
        if ((m_rowOf.contains(key) || fresh.contains(key)) && !targetSet.contains(key)) {
            target.append(key);
            targetSet.insert(key);
        }
    }

    // Removals, from the end, one signal per run of adjacent rows.
    for (int last = m_keys.size() - 1; last >= 0; --last) {
        if (targetSet.contains(m_keys.at(last)))
            continue;
        int first = last;
        while (first > 0 && !targetSet.contains(m_keys.at(first - 1)))
            --first;
        beginRemoveRows(QModelIndex(), first, last);
        m_keys.erase(m_keys.begin() + first, m_keys.begin() + last + 1);
        m_rows.erase(m_rows.begin() + first, m_rows.begin() + last + 1);
        endRemoveRows();
        last = first;
    }
    rebuildIndex();

    // The kept rows must be a subsequence of `target`; any other order (which
    // the registry's ID order never gives) is handled by a reset.
    QStringList kept;
    for (const QString& key : qAsConst(target)) {
        if (m_rowOf.contains(key))
            kept.append(key);
    }
    if (kept != m_keys) {
        QHash<QString, Row> cells = fresh;
        for (int row = 0; row < m_keys.size(); ++row) {
            if (!cells.contains(m_keys.at(row)))
                cells.insert(m_keys.at(row), m_rows.at(row));
        }
        resetRows(target, cells);
        return;
    }

    // Insertions, one signal per run of adjacent new keys; then the updates
    // of the rows that were there before.
    QSet<QString> inserted;
    int position = 0;
    const auto keptAt = [this, &position](const QString& key) {
        return position < m_keys.size() && m_keys.at(position) == key;
    };
    for (int i = 0; i < target.size();) {
        if (keptAt(target.at(i))) {
            ++position;
            ++i;
            continue;
        }
        const int first = i;
        while (i < target.size() && !keptAt(target.at(i)))
            ++i;
        const int count = i - first;
        beginInsertRows(QModelIndex(), position, position + count - 1);
        for (int k = 0; k < count; ++k) {
            const QString& key = target.at(first + k);
            m_keys.insert(position + k, key);
            m_rows.insert(position + k, fresh.value(key));
            inserted.insert(key);
        }
        rebuildIndex();
        endInsertRows();
        position += count;
    }

    for (auto it = fresh.cbegin(); it != fresh.cend(); ++it) {
        const int row = m_rowOf.value(it.key(), -1);
        if (row >= 0 && !inserted.contains(it.key()))
            updateRow(row, it.value());
    }
}

void SnapshotTableModel::resetRows(const QStringList& keys, const QHash<QString, Row>& fresh)
{
    beginResetModel();
    m_keys.clear();
    m_rows.clear();
    QSet<QString> taken;
    for (const QString& key : keys) {
        const auto cells = fresh.constFind(key);
        if (cells == fresh.constEnd() || taken.contains(key))
            continue;
        taken.insert(key);
        m_keys.append(key);
        m_rows.append(cells.value());
    }
    rebuildIndex();
    endResetModel();
}

void SnapshotTableModel::requestFlush()
{
    if (m_flushPending)
        return;
    m_flushPending = true;
    // Queued behind the notifications already waiting in the event queue, so
    // they all land in the one flush.
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_flushPending = false;
            flush();
        },
        Qt::QueuedConnection);
}

void SnapshotTableModel::updateRow(int row, const Row& cells)
{
    Row& current = m_rows[row];
    int first = -1;
    int last = -1;
    QVector<int> roles;
    const auto addRole = [&roles](int role) {
        if (!roles.contains(role))
            roles.append(role);
    };
    const int columns = int(std::min(current.size(), cells.size()));
    for (int column = 0; column < columns; ++column) {
        const SnapshotCell& before = current[std::size_t(column)];
        const SnapshotCell& after = cells[std::size_t(column)];
        if (before == after)
            continue;
        if (first < 0)
            first = column;
        last = column;
        if (before.text != after.text)
            addRole(Qt::DisplayRole);
        if (before.toolTip != after.toolTip)
            addRole(Qt::ToolTipRole);
        if (before.value != after.value) {
            addRole(SortRole);
            addRole(Qt::TextAlignmentRole);
        }
    }
    if (first < 0)
        return;
    current = cells;
    emit dataChanged(index(row, first), index(row, last), roles);
}

void SnapshotTableModel::rebuildIndex()
{
    m_rowOf.clear();
    m_rowOf.reserve(m_keys.size());
    for (int row = 0; row < m_keys.size(); ++row)
        m_rowOf.insert(m_keys.at(row), row);
}

void SnapshotTableModel::followRegistry(std::function<void(const QString&)> onInstance,
                                        std::function<void(const QStringList&)> onList)
{
    InstanceMgr* mgr = InstanceMgr::instance();
    const auto queued = Qt::QueuedConnection;
    using M = InstanceMgr;
    const auto one = [onInstance](const QString& id) { onInstance(id); };
    const auto list = [onList](const QStringList& ids) { onList(ids); };
    connect(mgr, &M::sigInstUpdated, this, list, queued);
    connect(mgr, &M::signalInsListToLogic, this, list, queued);
    connect(mgr, &M::signalMultiProgressUpdated, this, one, queued);
    connect(mgr, &M::signalProgreeDelayUpadaete, this, one, queued);
    connect(mgr, &M::signalProgressUpdated, this, one, queued);
    connect(mgr, &M::sigSymbolRemainQty, this, one, queued);
    connect(mgr, &M::signalTimeUpdate, this, one, queued);
    connect(mgr, &M::signalStatusUpdated, this, one, queued);
    connect(mgr, &M::signalModifyPush, this, one, queued);
    connect(mgr, &M::signalSymbolStatusUpdate, this,
            [onInstance](const QMap<QString, QMap<QString, QVariant>>& legs) {
                for (auto it = legs.cbegin(); it != legs.cend(); ++it)
                    onInstance(InstanceMgr::getInstIdFromSymbolKey(it.key()));
            },
            queued);
}
