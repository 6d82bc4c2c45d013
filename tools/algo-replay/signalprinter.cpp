#include "signalprinter.h"
#include "common/locking.h"

#include "jsonconvert.h"

#include <algologic.h>

#include <QJsonArray>
#include <QJsonDocument>

namespace AlgoReplay {

SignalPrinter::SignalPrinter(QTextStream& out, QObject* parent)
    : QObject(parent)
    , m_out(out)
{
    constexpr auto direct = Qt::DirectConnection;
    InstanceMgr* mgr = InstanceMgr::instance();
    connect(mgr, &InstanceMgr::sigInstUpdated, this, [this](QStringList ids) {
        print("sigInstUpdated", {ids});
    }, direct);
    connect(mgr, &InstanceMgr::signalInsListToLogic, this, [this](const QStringList& ids) {
        print("signalInsListToLogic", {ids});
    }, direct);
    connect(mgr, &InstanceMgr::signalMultiProgressUpdated, this, [this](const QString& id) {
        print("signalMultiProgressUpdated", {id});
    }, direct);
    connect(mgr, &InstanceMgr::signalProgressUpdated, this,
            [this](const QString& id, const QList<QString>& keys) {
                print("signalProgressUpdated", {id, QStringList(keys)});
            }, direct);
    connect(mgr, &InstanceMgr::sigSymbolRemainQty, this,
            [this](const QString& id, const QHash<QString, double>& remaining) {
                QVariantHash hash;
                for (auto it = remaining.cbegin(); it != remaining.cend(); ++it)
                    hash.insert(it.key(), it.value());
                print("sigSymbolRemainQty", {id, hash});
            }, direct);
    connect(mgr, &InstanceMgr::signalTimeUpdate, this,
            [this](const QString& id, const QString& status) {
                print("signalTimeUpdate", {id, status});
            }, direct);
    connect(mgr, &InstanceMgr::signalProgreeDelayUpadaete, this, [this](const QString& id) {
        print("signalProgreeDelayUpadaete", {id});
    }, direct);
    connect(mgr, &InstanceMgr::signalStatusUpdated, this,
            [this](const QString& id, const QString& status) {
                print("signalStatusUpdated", {id, status});
            }, direct);
    connect(mgr, &InstanceMgr::signalSymbolStatusUpdate, this,
            [this](const QMap<QString, QMap<QString, QVariant>>& legs) {
                QVariantMap map;
                for (auto it = legs.cbegin(); it != legs.cend(); ++it)
                    map.insert(it.key(), it.value());
                print("signalSymbolStatusUpdate", {map});
            }, direct);
    connect(mgr, &InstanceMgr::signalModifyPush, this,
            [this](const QString& id, const QString& ack, const QString& comment) {
                print("signalModifyPush", {id, ack, comment});
            }, direct);
    connect(mgr, &InstanceMgr::signalCalcProfitAmountFinished, this,
            [this] { print("signalCalcProfitAmountFinished", {}); }, direct);

    StrategyMgr* strategies = StrategyMgr::instance();
    connect(strategies, &StrategyMgr::sigAlgoInfoReady, this,
            [this] { print("sigAlgoInfoReady", {}); }, direct);
    connect(strategies, &StrategyMgr::sigQryAlgoStrategiesRsp, this,
            [this](const QList<AesStrategy>& list) {
                print("sigQryAlgoStrategiesRsp", {QVariant::fromValue(list)});
            }, direct);
    connect(strategies, &StrategyMgr::signalNewAuthority, this,
            [this](const AuthorityTable& table) {
                QVariantMap accounts;
                for (auto account = table.cbegin(); account != table.cend(); ++account) {
                    QVariantMap categories;
                    for (auto category = account->cbegin(); category != account->cend();
                         ++category) {
                        QVariantMap algos;
                        for (auto algo = category->cbegin(); algo != category->cend(); ++algo)
                            algos.insert(algo.key(), algo.value());
                        categories.insert(category.key(), algos);
                    }
                    accounts.insert(account.key(), categories);
                }
                print("signalNewAuthority", {accounts});
            }, direct);

    connect(LogMgr::instance(), &LogMgr::signalTradeMsgUpdated, this,
            [this](const QString& id, const VariantMap& message) {
                print("signalTradeMsgUpdated", {id, message});
            }, direct);
}

void SignalPrinter::print(const char* name, const QVariantList& args)
{
    QJsonArray jsonArgs;
    for (const QVariant& arg : args)
        jsonArgs.append(toJson(arg));
    // Written by hand so that "signal" comes first, as readers expect.
    const QByteArray argsText = QJsonDocument(jsonArgs).toJson(QJsonDocument::Compact);
    AlgoLogic::MutexLocker locker(&m_mutex);
    m_out << "{\"signal\":\"" << name << "\",\"args\":" << argsText << "}\n";
    m_out.flush();
}

} // namespace AlgoReplay
