#pragma once

// Record keys and value words of the algo server protocol, as the terminal's
// shared definitions export them. Every key constant has its own last name as
// its text (Tessel_Fields::Strategy::strategyID is "strategyID"); two keys of
// different groups with the same last name share a text on purpose. Value
// words have the texts the server uses. The misspelt "Mulit" group names are
// the protocol's own and are kept.

#include <QString>

// Defines a key constant whose text is its own name.
#define ALGODEFINES_KEY(name) inline const QString name = QStringLiteral(#name);

namespace Tessel_Fields {
namespace Strategy {
ALGODEFINES_KEY(strategyID)
ALGODEFINES_KEY(strategyName)
ALGODEFINES_KEY(strategyType)
ALGODEFINES_KEY(strategyStatus)
ALGODEFINES_KEY(strategyParas)
ALGODEFINES_KEY(strategyReport)
ALGODEFINES_KEY(reportType)
ALGODEFINES_KEY(StrategyInstanceAlias)
} // namespace Strategy
namespace Security {
ALGODEFINES_KEY(symbol)
ALGODEFINES_KEY(side)
ALGODEFINES_KEY(orderQty)
ALGODEFINES_KEY(cumQty)
ALGODEFINES_KEY(avgPx)
} // namespace Security
namespace System {
ALGODEFINES_KEY(createTime)
ALGODEFINES_KEY(requestExeStatus)
} // namespace System
namespace UserAccount {
ALGODEFINES_KEY(userID)
ALGODEFINES_KEY(reMarks)
} // namespace UserAccount
} // namespace Tessel_Fields

namespace Tessel_Values {
namespace MdcSecurityType {
inline const QString StockType = QStringLiteral("Stock");
inline const QString BondType = QStringLiteral("Bond");
} // namespace MdcSecurityType
namespace PositionEffect {
inline const QString open = QStringLiteral("Open");
inline const QString close = QStringLiteral("Close");
} // namespace PositionEffect
} // namespace Tessel_Values

namespace Helm_Fields {
namespace Strategy {
ALGODEFINES_KEY(clAlgoID)
} // namespace Strategy
} // namespace Helm_Fields

namespace HelmConstants {
namespace DateTimeFormatString {
// Date-time format of the algo server's time fields.
inline const QString ALGO_DATE_TIME_FORMAT = QStringLiteral("yyyyMMdd-hh:mm:ss");
} // namespace DateTimeFormatString
} // namespace HelmConstants

namespace Algo_Fields {
namespace HelmStrategy {
ALGODEFINES_KEY(AlgCreateTime)
ALGODEFINES_KEY(AlgStartTime)
ALGODEFINES_KEY(AlgEndTime)
ALGODEFINES_KEY(ClParentOrderID)
ALGODEFINES_KEY(ExecAckStatus)
ALGODEFINES_KEY(Metadata)
ALGODEFINES_KEY(StrategyAlterComment)
ALGODEFINES_KEY(StrategyCumAmount)
ALGODEFINES_KEY(onTradingAmount)
ALGODEFINES_KEY(perfType)
ALGODEFINES_KEY(strategyDeleted)
} // namespace HelmStrategy
namespace AlgoInstContentInfo {
ALGODEFINES_KEY(AlgoStartTime)
ALGODEFINES_KEY(AlgoStartTime2)
ALGODEFINES_KEY(AlgoEndTime)
ALGODEFINES_KEY(AlgoEndTime2)
ALGODEFINES_KEY(EntrustProp)
ALGODEFINES_KEY(Exchange)
ALGODEFINES_KEY(OrderSide)
ALGODEFINES_KEY(PriceLimits)
ALGODEFINES_KEY(PriceLimitsPOV)
ALGODEFINES_KEY(Quantity)
ALGODEFINES_KEY(Quantity_Amount)
ALGODEFINES_KEY(SecurityAccount)
ALGODEFINES_KEY(StockPriceLimit)
ALGODEFINES_KEY(Symbol)
ALGODEFINES_KEY(SymbolParamKey)
ALGODEFINES_KEY(TradingAccount)
ALGODEFINES_KEY(buyEntrustQty)
ALGODEFINES_KEY(sellEntrustQty)
ALGODEFINES_KEY(instMode)
ALGODEFINES_KEY(occupyAmount)
ALGODEFINES_KEY(participationrate)
} // namespace AlgoInstContentInfo
namespace AlgoInstProgressFields {
ALGODEFINES_KEY(AchieveProfit)
ALGODEFINES_KEY(DealAmount)
ALGODEFINES_KEY(DealAvgPrice)
ALGODEFINES_KEY(EntrustAmount)
ALGODEFINES_KEY(EntrustQty)
ALGODEFINES_KEY(FilledQty)
ALGODEFINES_KEY(Progress)
ALGODEFINES_KEY(Symbol)
ALGODEFINES_KEY(TargetAmount)
ALGODEFINES_KEY(TargetQty)
ALGODEFINES_KEY(Timestamp)
ALGODEFINES_KEY(buyAmount)
ALGODEFINES_KEY(buyAvgPrice)
ALGODEFINES_KEY(buyCancelQty)
ALGODEFINES_KEY(buyCloseQty)
ALGODEFINES_KEY(buyDealQty)
ALGODEFINES_KEY(buyFee)
ALGODEFINES_KEY(buyOrderQty)
ALGODEFINES_KEY(lastOrderTime)
ALGODEFINES_KEY(orderInfo)
ALGODEFINES_KEY(otherInfo)
ALGODEFINES_KEY(sellAmount)
ALGODEFINES_KEY(sellAvgPrice)
ALGODEFINES_KEY(sellCancelQty)
ALGODEFINES_KEY(sellCloseQty)
ALGODEFINES_KEY(sellDealQty)
ALGODEFINES_KEY(sellFee)
ALGODEFINES_KEY(sellOrderQty)
} // namespace AlgoInstProgressFields
namespace AlgoMetaDataFields {
ALGODEFINES_KEY(basePrice)
} // namespace AlgoMetaDataFields
namespace Report {
ALGODEFINES_KEY(ReportTime)
ALGODEFINES_KEY(Symbol)
} // namespace Report
} // namespace Algo_Fields

namespace Algo_Values {
namespace AlgoDeleteStatus {
inline const QString deleted = QStringLiteral("1");
} // namespace AlgoDeleteStatus
namespace AlgoGlobalType {
inline const QString unknown = QStringLiteral("Unknown");
inline const QString all = QStringLiteral("All");
inline const QString T0 = QStringLiteral("T0");
inline const QString multiStr = QStringLiteral("MultiStr");
inline const QString feature = QStringLiteral("Feature");
inline const QString instruction = QStringLiteral("Instruction");
inline const QString deposit = QStringLiteral("Deposit");
} // namespace AlgoGlobalType
namespace AlgoParamId {
ALGODEFINES_KEY(AlgoSecurityList)
ALGODEFINES_KEY(EntrustBalance)
ALGODEFINES_KEY(EstimatedTotalEntrustQty)
ALGODEFINES_KEY(InstructionAlgoSecurityList)
ALGODEFINES_KEY(InvestType)
ALGODEFINES_KEY(OpenClose)
ALGODEFINES_KEY(comment)
ALGODEFINES_KEY(entrustProp)
ALGODEFINES_KEY(traderOrder)
} // namespace AlgoParamId
namespace InstanceStates {
inline const QString COMPLETE = QStringLiteral("2");
inline const QString STOP = QStringLiteral("5");
} // namespace InstanceStates
namespace PerfType {
inline const QString t0 = QStringLiteral("t0");
} // namespace PerfType
namespace ReportType {
inline const QString ui = QStringLiteral("ui");
inline const QString console = QStringLiteral("console");
inline const QString message = QStringLiteral("message");
inline const QString diff = QStringLiteral("diff");
inline const QString tradeMsg = QStringLiteral("tradeMsg");
} // namespace ReportType
namespace instMode {
inline const QString singleMode = QStringLiteral("single");
inline const QString multiMode = QStringLiteral("multi");
} // namespace instMode
} // namespace Algo_Values

namespace Multi_Fields {
namespace MulitStrDetailInfo {
ALGODEFINES_KEY(Basis)
ALGODEFINES_KEY(EffectTime)
ALGODEFINES_KEY(SingleOrderQty)
ALGODEFINES_KEY(StrategyID)
ALGODEFINES_KEY(SymbolListA)
ALGODEFINES_KEY(SymbolListB)
ALGODEFINES_KEY(TotalOrderQty)
} // namespace MulitStrDetailInfo
namespace MulitStrBasis {
ALGODEFINES_KEY(BasisCompare)
ALGODEFINES_KEY(BasisType)
// Values of BasisType.
ALGODEFINES_KEY(ForwardOpen)
ALGODEFINES_KEY(ForwardClose)
ALGODEFINES_KEY(ReverseOpen)
ALGODEFINES_KEY(ReverseClose)
} // namespace MulitStrBasis
namespace MulitEffectTime {
ALGODEFINES_KEY(EffectTimeStart)
ALGODEFINES_KEY(EffectTimeEnd)
} // namespace MulitEffectTime
namespace MulitTableInfo {
ALGODEFINES_KEY(ActivePassive)
ALGODEFINES_KEY(PrincipalRatio)
ALGODEFINES_KEY(TradingAccount)
} // namespace MulitTableInfo
namespace MultiInstProgressFields {
ALGODEFINES_KEY(Batch)
ALGODEFINES_KEY(EntrustQty)
ALGODEFINES_KEY(EntrustRatio)
ALGODEFINES_KEY(ExpectBasis)
ALGODEFINES_KEY(FilledQty)
ALGODEFINES_KEY(LamenessRate)
ALGODEFINES_KEY(LamenessState)
ALGODEFINES_KEY(OpenQty)
ALGODEFINES_KEY(Progress)
ALGODEFINES_KEY(RealBasis)
ALGODEFINES_KEY(Remarks)
ALGODEFINES_KEY(RunningData)
ALGODEFINES_KEY(SingleOrderQty)
ALGODEFINES_KEY(TotalOrderQty)
ALGODEFINES_KEY(TradingState)
ALGODEFINES_KEY(UpdateCnt)
} // namespace MultiInstProgressFields
} // namespace Multi_Fields

namespace Multi_Values {
namespace ActivePassive {
inline const QString Active = QStringLiteral("Active");
} // namespace ActivePassive
} // namespace Multi_Values

#undef ALGODEFINES_KEY
