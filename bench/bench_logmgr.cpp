// Each LogMgr report slot on realistic pushes, against the lean version of
// the same work (read the record, parse the body, re-serialise each
// progressReportMap member, store, pop) and, for scale, the bare parse of
// the same bodies. Each iteration pops what it stored, as the user interface
// does, so the buffers stay small.

#include "benchmarks.h"
#include "fixture.h"
#include "floors.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QMutex>
#include <QReadWriteLock>
#include <QSet>

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace {

namespace S = Tessel_Fields::Strategy;
namespace R = Algo_Values::ReportType;
namespace P = Algo_Fields::AlgoInstProgressFields;

const QString kProgressReportMap = QStringLiteral("progressReportMap");
const QString kInstance = QStringLiteral("H04-000");

QString json(const QVariant& value)
{
    return QString::fromUtf8(QJsonDocument::fromVariant(value).toJson(QJsonDocument::Compact));
}

VariantMap progressRecord(int leg)
{
    return {{P::Symbol, Bench::legSymbol(leg)},
            {Algo_Fields::AlgoInstContentInfo::OrderSide, QStringLiteral("1")},
            {P::Timestamp, 1763605800000LL + leg},
            {P::FilledQty, 9000 + leg},
            {P::TargetQty, 60000},
            {P::EntrustQty, 10000},
            {P::DealAmount, 92250.5},
            {P::DealAvgPrice, 10.25},
            {P::TargetAmount, 0},
            {P::EntrustAmount, 102500.0},
            {P::lastOrderTime, QStringLiteral("1763605795000")},
            {P::otherInfo, QStringLiteral("slice 12 of 40, participation 9.8%")}};
}

// A ui body of ten legs under progressReportMap (about 3 KB).
QString progressMapBody()
{
    QVariantMap members;
    for (int leg = 0; leg < 10; ++leg)
        members.insert(kInstance % QLatin1Char('_') % Bench::legSymbol(leg) % QStringLiteral("_1"),
                       progressRecord(leg));
    return json(QVariantMap{{kProgressReportMap, members}});
}

QVariant push(const QList<std::pair<QString, QString>>& typeAndBody, const QString& perfType = {})
{
    QVariantList list;
    for (const auto& item : typeAndBody) {
        VariantMap record{{S::reportType, item.first},
                          {S::strategyID, kInstance},
                          {S::strategyReport, item.second},
                          {Tessel_Fields::UserAccount::userID, Bench::kLogin}};
        if (!perfType.isEmpty())
            record.insert(Algo_Fields::HelmStrategy::perfType, perfType);
        list.append(record);
    }
    return list;
}

// ---- lean versions -------------------------------------------------------
// The same buffers as LogMgr (one per kind, each with its lock), filled and
// drained the same way.

struct LeanBuffers
{
    QMutex progressMutex;
    QHash<QString, QList<QString>> progress; // guarded by progressMutex
    QMutex logMutex;
    QHash<QString, QList<QString>> log; // guarded by logMutex
    QMutex msgMutex;
    QHash<QString, QStringList> msg; // guarded by msgMutex
    QMutex diffMutex;
    QHash<QString, QString> diff; // guarded by diffMutex
    QReadWriteLock tradeLock;
    QMap<int, VariantMap> trades;           // guarded by tradeLock
    QHash<QString, QSet<int>> tradeNumbers; // guarded by tradeLock
};

LeanBuffers& lean()
{
    static LeanBuffers s_buffers;
    return s_buffers;
}

template <typename Hash>
void leanAppend(QMutex& mutex, Hash& hash, const QString& id, const QStringList& texts)
{
    AlgoLogic::MutexLocker locker(&mutex);
    hash[id].append(texts);
}

void leanReports(const QVariant& reports)
{
    LeanBuffers& b = lean();
    const QVariantList list = reports.toList();
    const QString login = CBusinessDataBase::GetInstance()->GetLoginAccount();
    for (const QVariant& item : list) {
        const VariantMap record = item.toMap();
        const QString type = record.value(S::reportType).toString();
        const QString id = record.value(S::strategyID).toString();
        const QString body = record.value(S::strategyReport).toString();
        benchmark::DoNotOptimize(record.value(Tessel_Fields::UserAccount::userID).toString()
                                 == login);
        if (type == R::ui) {
            const QJsonDocument document = QJsonDocument::fromJson(body.toUtf8());
            if (document.isNull())
                continue;
            const QJsonObject object = document.object();
            const auto map = object.constFind(kProgressReportMap);
            if (map == object.constEnd()) {
                leanAppend(b.progressMutex, b.progress, id, {body});
                continue;
            }
            const QJsonObject members = map.value().toObject();
            QStringList texts;
            texts.reserve(members.size());
            for (auto it = members.constBegin(); it != members.constEnd(); ++it)
                texts.append(QString::fromUtf8(
                    QJsonDocument(it.value().toObject()).toJson(QJsonDocument::Compact)));
            leanAppend(b.progressMutex, b.progress, id, texts);
        } else if (type == R::console) {
            leanAppend(b.logMutex, b.log, id, {body});
        } else if (type == R::message) {
            leanAppend(b.msgMutex, b.msg, id, {body});
        } else if (type == R::diff) {
            AlgoLogic::MutexLocker locker(&b.diffMutex);
            b.diff.insert(id, body);
        } else if (type == R::tradeMsg) {
            AlgoLogic::WriteLocker locker(&b.tradeLock);
            VariantMap message = QJsonDocument::fromJson(body.toUtf8()).object().toVariantMap();
            if (message.isEmpty())
                continue;
            message.insert(S::strategyID, id);
            message.insert(Tessel_Fields::Security::symbol,
                           message.value(Algo_Fields::Report::Symbol));
            const int number = b.trades.size();
            b.trades.insert(number, message);
            b.tradeNumbers[id].insert(number);
        }
    }
}

void leanPopAll()
{
    LeanBuffers& b = lean();
    QHash<QString, QList<QString>> progress;
    {
        AlgoLogic::MutexLocker locker(&b.progressMutex);
        b.progress.swap(progress);
    }
    QHash<QString, QStringList> messages;
    {
        AlgoLogic::MutexLocker locker(&b.msgMutex);
        b.msg.swap(messages);
    }
    QHash<QString, QString> diffs;
    {
        AlgoLogic::MutexLocker locker(&b.diffMutex);
        b.diff.swap(diffs);
    }
    QList<QString> lines;
    {
        AlgoLogic::MutexLocker locker(&b.logMutex);
        lines = b.log.take(kInstance);
    }
    benchmark::DoNotOptimize(progress);
}

void bareParse(const QVariant& reports)
{
    const QVariantList list = reports.toList();
    for (const QVariant& item : list)
        benchmark::DoNotOptimize(QJsonDocument::fromJson(
            item.toMap().value(S::strategyReport).toString().toUtf8()));
}

struct Case
{
    const char* name;
    QVariant reports;
    std::function<void(const QVariant&)> slot;
    int64_t iterations; // 0: chosen by the library
};

void popAll()
{
    LogMgr* log = LogMgr::instance();
    QHash<QString, QList<QString>> progress;
    log->popInstProgress(progress);
    QHash<QString, QStringList> messages;
    log->popInstMsg(messages);
    QHash<QString, QString> diffs;
    log->popInstDiff(diffs);
    QList<QString> lines;
    log->popInstLog(kInstance, lines);
    benchmark::DoNotOptimize(progress);
}

} // namespace

void registerLogBenchmarks()
{
    LogMgr* log = LogMgr::instance();
    const auto gather = [log](const QVariant& r) { log->slotRecvGatherStrategyReport(r); };
    const auto t0 = [log](const QVariant& r) { log->slotRecvT0ProgressPerformanceReport(r); };
    const QString plain = json(progressRecord(0));
    const QString trade = QStringLiteral(
        "{\"Symbol\":\"600000.SH\",\"ReportTime\":\"20261120-09:46:20\",\"Price\":10.24,"
        "\"Qty\":3000,\"Side\":\"1\",\"OrderID\":\"O-778812\"}");
    const std::vector<Case> cases = {
        {"gather/uiMap", push({{R::ui, progressMapBody()}}), gather, 0},
        {"t0/uiMap", push({{R::ui, progressMapBody()}}, Algo_Values::PerfType::t0), t0, 0},
        {"gather/uiPlain", push({{R::ui, plain}, {R::ui, plain}, {R::ui, plain}, {R::ui, plain}}),
         gather, 0},
        {"gather/text",
         push({{R::console, QStringLiteral("09:46:12 child order 6000@10.24 sent")},
               {R::message, QStringLiteral("participation capped at 15%")},
               {R::diff, QStringLiteral("SingleOrderQty: 10 -> 20")}}),
         gather, 0},
        // Trade messages are kept for good: a fixed count bounds the memory.
        {"gather/tradeMsg", push({{R::tradeMsg, trade}}), gather, 50000},
    };
    for (const Case& c : cases) {
        auto* figure = benchmark::RegisterBenchmark(
            ("log/" + std::string(c.name)).c_str(), [c](benchmark::State& state) {
                Bench::setUpHost();
                for (auto _ : state) {
                    c.slot(c.reports);
                    popAll();
                }
            });
        auto* floor = benchmark::RegisterBenchmark(
            ("floor/log/" + std::string(c.name)).c_str(), [c](benchmark::State& state) {
                for (auto _ : state) {
                    leanReports(c.reports);
                    leanPopAll();
                }
            });
        if (c.iterations > 0) {
            figure->Iterations(c.iterations);
            floor->Iterations(c.iterations);
        }
        if (std::string(c.name) == "gather/text")
            continue; // nothing to parse
        benchmark::RegisterBenchmark(
            ("ref/log/" + std::string(c.name) + "/bare-parse").c_str(),
            [c](benchmark::State& state) {
                for (auto _ : state)
                    bareParse(c.reports);
            });
    }
}
