#pragma once

// Floors: lean hand-written versions of the steps each measured operation
// must take under the mandated Qt types (QVariantMap records, QString keys,
// QReadWriteLock, QJsonDocument), written the cheap way: static keys,
// QStringBuilder, no repeated lookups or copies, no logging, no signals. A
// figure divided by its floor is the overhead the library adds.
//
// The lean registry mirrors the IDs of the real one (same number of keys, same
// texts) so that lookups cost the same; lean instances carry only the fields
// the steps touch.

#include <algologic.h>

#include <QHash>
#include <QList>
#include <QMap>
#include <QReadWriteLock>
#include <QString>

#include <vector>

namespace Floor {

struct Leg
{
    QString key;
    QString symbol;
    QString side;
    QString status;
    QString limitPrice;
    QString entrustTime;
    double targetQty = 60000.0;
    double targetAmount = 0.0;
    double filledQty = 0.0;
    double dealBalance = 0.0;
    double avgPrice = 0.0;
    double entrustQty = 0.0;
    double entrustAmount = 0.0;
    double progress = 0.0;
    double entrustProgress = 0.0;
    double amountEntrustProgress = 0.0;
    double amountDealProgress = 0.0;
    VariantMap lastReport;
    // T0 figures
    double buyDealQty = 0.0, sellDealQty = 0.0, buyAmount = 0.0, sellAmount = 0.0;
    double buyFee = 0.0, sellFee = 0.0, profit = 0.0;
};

struct Instance
{
    QString id;
    QString algoType;
    QString name;
    QString status;
    QString deleted;
    QString creator;
    QString tradeOrder;
    QString alias;
    QString remark;
    QString params;
    double targetQty = 0.0, targetAmount = 0.0, filledQty = 0.0, filledBalance = 0.0;
    double progress = 0.0, amountProgress = 0.0;
    bool finalProgress = false;
    QDateTime startTime, endTime, createTime;
    VariantMap data;
    QMap<QString, Leg*> legs;
};

// Lean copies of the real registry's instances (same IDs, filter fields and
// legs), made once per size; never freed.
void mirrorRegistry();
Instance* find(const QString& id);
QReadWriteLock& contentLock();

// What a router hands on: the changed leg keys and remaining quantities.
struct Outputs
{
    QList<QString> keys;
    QHash<QString, double> remaining;
    QMap<QString, VariantMap> legRecords;
    QString status;
};

void progressGather(const VariantMapList& records, Outputs& out);
void strategyReport(const VariantMapList& records, Outputs& out);
void statusUpdate(const QString& id, const VariantMapList& records, Outputs& out);
void modifyPush(const QString& id, const VariantMapList& records, Outputs& out);
void queryResponse(const VariantMapList& records, Outputs& out);
// The T0 profit recalculation over every lean T0 instance; returns the legs.
int t0Tick();

// A flat, ID-ordered array of the filter fields (texts interned to numbers),
// built once from the real registry: the cheapest structure that answers the
// registry queries.
class FlatIndex
{
public:
    void build();
    QStringList all() const;                                           // every entry
    QStringList ofType(const QString& type) const;                    // deleted included
    QStringList live(const QString& type, bool allCreators) const;    // one type
    QStringList liveAllTypes(bool allCreators) const;
    QStringList withNames(const QStringList& names) const;

private:
    struct Entry
    {
        QString id;
        int type;
        int creator;
        int name;
        bool deleted;
    };
    int idOf(const QString& text) const { return m_texts.value(text, -1); }
    bool creatorPasses(const Entry& e, bool allCreators, int login) const;
    std::vector<Entry> m_entries;
    QHash<QString, int> m_texts;
    int m_empty = -1;
};

// The same queries as a walk over a QMap of lean instances.
QStringList mapWalkLive(const QString& type, bool allCreators);

} // namespace Floor
