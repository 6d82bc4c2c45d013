#pragma once

// The library's own text constants: record keys, value words, display labels
// and algo-name lists. They have internal linkage (every source file holds its
// own copy, built before any other code of that file runs) and are never
// modified. Lists are built after the texts they repeat. Comparisons against
// them are exact and case-sensitive.
//
// Group 1 and StandardProgressAlgoNames are read by the library itself; the
// rest is carried for the terminal's other modules.

#include <QString>
#include <QStringList>

namespace AlgoConst {

// ---- Keys and words the library reads ------------------------------------

// Keys of a leg's parameter record (rush-limit-up instances).
const QString ParamSymbol = QStringLiteral("symbol");
const QString ParamMarket = QStringLiteral("market");
const QString ParamSide = QStringLiteral("side");
const QString ParamOrderQty = QStringLiteral("orderQty");
const QString ParamOrderAmount = QStringLiteral("orderAmount");
const QString ParamEntrustProp = QStringLiteral("entrustProp");
const QString ParamTradingAccount = QStringLiteral("tradingAccount");
const QString ParamSecurityAccount = QStringLiteral("securityAccount");

// Algo-type words that select an instance class, and the info sub-record key.
const QString AlgoTypeT0 = QStringLiteral("T0");
const QString AlgoTypeMulti = QStringLiteral("Multi");
const QString InfoKey = QStringLiteral("info");

// Class tags an instance carries to tell its class (same texts as above).
const QString ClassTypeInfo = InfoKey;
const QString ClassTypeMulti = AlgoTypeMulti;
const QString ClassTypeT0 = AlgoTypeT0;

// Parameter display labels.
const QString LabelStartAfterCreate = QStringLiteral("创建后是否立即启动");
const QString LabelContinueAfterExpiry = QStringLiteral("到期后是否继续交易");
const QString LabelDeadlineDate = QStringLiteral("截止日期");
const QString LabelStartTime = QStringLiteral("开始时间");
const QString LabelEndTime = QStringLiteral("结束时间");
const QString LabelTargetQty = QStringLiteral("目标数量");
const QString LabelBuyType = QStringLiteral("买入类型");
const QString LabelSellType = QStringLiteral("卖出类型");

} // namespace AlgoConst

// Algos whose progress is measured in amount rather than quantity.
const QStringList StandardProgressAlgoNames = {
    QStringLiteral("AITWAP7"), QStringLiteral("AIPOV7"), QStringLiteral("AITWAP8"),
    QStringLiteral("AIPOV8"), QStringLiteral("PursueHighLimitGY"),
    QStringLiteral("PursueHighLimitPLUS"), QStringLiteral("PursueHighLimit"),
    QStringLiteral("PursueHighLimitB"), QStringLiteral("DoubleConditionOrderPLUS"),
    QStringLiteral("DoubleConditionOrder"), QStringLiteral("AIPOV9"), QStringLiteral("AITWAP9"),
};

namespace AlgoConst {

using ::StandardProgressAlgoNames;

// Grid strategies: their legs may carry the side "All".
const QString AlgoGridTrading = QStringLiteral("GridTradingStrategy");
const QString AlgoGridTradingYmd = QStringLiteral("GridTradingYmdStrategy");

// ---- Carried for the terminal's other modules ----------------------------

// Algo parameter keys.
const QString KeyOrderAmount = ParamOrderAmount;
const QString KeyOrderQty = ParamOrderQty;
const QString KeyMaxOrderQty = QStringLiteral("maxOrderQty");
const QString KeyStartTime = QStringLiteral("startTime");
const QString KeyEndTime = QStringLiteral("endTime");
const QString KeyUpdownRange = QStringLiteral("updownRange");
const QString KeyHighLimitedPriceDiff = QStringLiteral("highLimitedPriceDiff");
const QString KeyHighLimitedPriceDiffRate = QStringLiteral("highLimitedPriceDiffRate");
const QString KeyAskTotalAmount = QStringLiteral("askTotalAmount");
const QString KeyHighLimitAmount = QStringLiteral("highLimitAmount");
const QString KeyHighLimitQty = QStringLiteral("highLimitQty");
const QString KeyHandicapQty = QStringLiteral("handicapQty");
const QString KeyHandicapAmount = QStringLiteral("handicapAmount");
const QString KeyTouchMaxPx = QStringLiteral("touchMaxPx");
const QString KeyCancelCoveredQty = QStringLiteral("cancelCoveredQty");
const QString KeyCancelCoveredAmount = QStringLiteral("cancelCoveredAmount");
const QString KeyCancelLeftCoveredRate = QStringLiteral("cancelLeftCoveredRate");
const QString KeyCancelMinInterval = QStringLiteral("cancelMinInterval");
const QString KeyFrontBigOrderTotalCancelQty = QStringLiteral("frontBigOrderTotalCancelQty");
const QString KeyBigOrderBaseQty = QStringLiteral("bigOrderBaseQty");
const QString KeyFrontBigOrderTotalCancelAmount =
    QStringLiteral("frontBigOrderTotalCancelAmount");
const QString KeyBigOrderBaseAmount = QStringLiteral("bigOrderBaseAmount");
const QString KeyFrontCancelLeftQty = QStringLiteral("frontCancelLeftQty");
const QString KeyFrontCancelLeftAmount = QStringLiteral("frontCancelLeftAmount");
const QString KeyFrontCancelValidTime = QStringLiteral("frontCancelValidTime");
const QString KeyRemark = QStringLiteral("remark");
const QString KeyNoEntrustIfCovered = QStringLiteral("noEntrustIfCovered");
const QString KeyTradingAccount = ParamTradingAccount;
const QString KeySecurityAccount = ParamSecurityAccount;
const QString KeySymbol = ParamSymbol;
const QString KeyMarket = ParamMarket;
const QString KeySecurityType = QStringLiteral("securityType");
const QString KeySecuritySubType = QStringLiteral("securitySubType");
const QString KeySide = ParamSide;
const QString KeyEntrustProp = ParamEntrustProp;
const QString KeyPriceLevel = QStringLiteral("priceLevel");
const QString KeyPointedPrice = QStringLiteral("pointedPrice");

const QStringList AlgoParamKeys = {
    KeyOrderAmount, KeyOrderQty, KeyMaxOrderQty, KeyStartTime, KeyEndTime, KeyUpdownRange,
    KeyHighLimitedPriceDiff, KeyHighLimitedPriceDiffRate, KeyAskTotalAmount,
    KeyHighLimitAmount, KeyHighLimitQty, KeyHandicapQty, KeyHandicapAmount, KeyTouchMaxPx,
    KeyCancelCoveredQty, KeyCancelCoveredAmount, KeyCancelLeftCoveredRate,
    KeyCancelMinInterval, KeyFrontBigOrderTotalCancelQty, KeyBigOrderBaseQty,
    KeyFrontBigOrderTotalCancelAmount, KeyBigOrderBaseAmount, KeyFrontCancelLeftQty,
    KeyFrontCancelLeftAmount, KeyFrontCancelValidTime, KeyRemark, KeyNoEntrustIfCovered,
};
const QStringList OrderParamKeys = QStringList{
    KeyTradingAccount, KeySecurityAccount, KeySymbol, KeyMarket, KeySecurityType,
    KeySecuritySubType, KeySide, KeyEntrustProp, KeyPriceLevel, KeyPointedPrice,
} + AlgoParamKeys;

// Further order and progress keys.
const QString KeyAuctionEnable = QStringLiteral("auctionEnable");
const QString KeyClosingRate = QStringLiteral("closingRate");
const QString KeyFilledAmount = QStringLiteral("filledAmount");
const QString KeyFilledQty = QStringLiteral("filledQty");
const QString KeyFrontAmount = QStringLiteral("frontAmount");
const QString KeyFrontCancelValid = QStringLiteral("frontCancelValid");
const QString KeyFrontOrderNum = QStringLiteral("frontOrderNum");
const QString KeyFrontPoistion = QStringLiteral("frontPoistion"); // spelt so on the wire
const QString KeyFrontQty = QStringLiteral("frontQty");
const QString KeyMaxCoveredQty = QStringLiteral("maxCoveredQty");
const QString KeyObjectOrderNum = QStringLiteral("objectOrderNum");
const QString KeyOrderNo = QStringLiteral("orderNo");
const QString KeyOrderStatus = QStringLiteral("orderStatus");
const QString KeyOrderTime = QStringLiteral("orderTime");
const QString KeyQty = QStringLiteral("qty");
const QString KeyTime = QStringLiteral("time");
const QString KeyStrAlertMsg = QStringLiteral("strAlertMsg");
const QString KeyDealAmount = QStringLiteral("dealAmount");
const QString KeySumInst = QStringLiteral("sumInst");
const QString KeyQuotaStatus = QStringLiteral("quotaStatus");
const QString KeyIsChecked = QStringLiteral("isChecked");

// Instance-creation flags, list key, value-state and filter words.
const QString FlagIsCreateAndStart = QStringLiteral("IS_CREATE_AND_START");
const QString FlagIsModifyAndStart = QStringLiteral("IS_MODIFY_AND_START");
const QString FlagIsCreatedClose = QStringLiteral("IS_CREATED_CLOSE");
const QString KeyDeletedInstanceIdList = QStringLiteral("DELETED_INSTANCE_ID_VARIANT_LIST");
const QString ValueStateInit = QStringLiteral("INIT");
const QString ValueStateSaveValue = QStringLiteral("SAVEVALUE");
const QString ValueStateValueChanged = QStringLiteral("VALUECHANGED");
const QString ValueStateHasValue = QStringLiteral("HasValue");
const QString ValueStateNoValue = QStringLiteral("NoValue");
const QString ValueStateNoField = QStringLiteral("NoField");
const QString FilterAll = QStringLiteral("all");
const QString FilterAllExceptAdjustPosition = QStringLiteral("allExceptAdjustPosition");
const QString StopNoCloseInst = QStringLiteral("stopNoCloseInst");

// Settings and table names.
const QString SettingInstructionAlgoLogActive = QStringLiteral("InstructionAlgoLogActive");
const QString SettingInstructionAlgoLogCheck = QStringLiteral("InstructionAlgoLogCheck");
const QString SettingInstructionAlgoRunInfoSumActive =
    QStringLiteral("InstructionAlgoRunInfoSumActive");
const QString SettingInstructionAlgoRunInfoSumCheck =
    QStringLiteral("InstructionAlgoRunInfoSumCheck");
const QString SettingInstructionAlgoRunInfoSumSetting =
    QStringLiteral("InstructionAlgoRunInfoSumSetting");
const QString SettingInstructionAlgoRunLogInfoSetting =
    QStringLiteral("InstructionAlgoRunLogInfoSetting");
const QString SettingInstructionArbitrageLogInfoSetting =
    QStringLiteral("InstructionArbitrageLogInfoSetting");
const QString SettingInstructionArbitrageRunInfoSumSetting =
    QStringLiteral("InstructionArbitrageRunInfoSumSetting");
const QString SettingInstructionHKAlgoRunInfoSumSetting =
    QStringLiteral("InstructionHKAlgoRunInfoSumSetting");
const QString SettingInstructionHKFHRunLogInfoSetting =
    QStringLiteral("InstructionHKFHRunLogInfoSetting");
const QString SettingInstructionHKZDAlgoRunInfoSumSetting =
    QStringLiteral("InstructionHKZDAlgoRunInfoSumSetting");
const QString SettingInstructionHKZDRunLogInfoSetting =
    QStringLiteral("InstructionHKZDRunLogInfoSetting");
const QString SettingInstructionMarginAlgoRunInfoSumSetting =
    QStringLiteral("InstructionMarginAlgoRunInfoSumSetting");
const QString SettingInstructionMarginAlgoRunLogInfoSetting =
    QStringLiteral("InstructionMarginAlgoRunLogInfoSetting");
const QString SettingInstructionStrategyLogCheck = QStringLiteral("InstructionStrategyLogCheck");
const QString SettingInstructionStrategyRunInfoSumCheck =
    QStringLiteral("InstructionStrategyRunInfoSumCheck");
const QString SettingInstructionbondAlgoRunInfoSumSetting =
    QStringLiteral("InstructionbondAlgoRunInfoSumSetting");
const QString SettingInstructionbondAlgoRunLogInfoSetting =
    QStringLiteral("InstructionbondAlgoRunLogInfoSetting");
const QString SettingT0ManagerPortfolioEntrustViewData =
    QStringLiteral("T0ManagerPortfolioEntrustViewData");
const QString SettingT0PortfolioTradeBuySellRatio = QStringLiteral("T0PortfolioTrade_BuySellRatio");
const QString SettingT0PortfolioTradeBuySettings = QStringLiteral("T0PortfolioTrade_BuySettings");
const QString SettingT0PortfolioTradeCommonSettings =
    QStringLiteral("T0PortfolioTrade_CommonSettings");
const QString SettingT0PortfolioTradeMaxBuySettings =
    QStringLiteral("T0PortfolioTrade_MaxBuySettings");
const QString SettingT0PortfolioTradeMaxSellSettings =
    QStringLiteral("T0PortfolioTrade_MaxSellSettings");
const QString SettingT0PortfolioTradeSellSettings = QStringLiteral("T0PortfolioTrade_SellSettings");
const QString SettingQuantStockSelectionBaseQuotaList =
    QStringLiteral("QuantitativeStockSelection_BaseQuotaList");
const QString SettingQuantStockSelectionFinanceQuotaList =
    QStringLiteral("QuantitativeStockSelection_FinanceQuotaList");
const QString SettingQuantStockSelectionQuotationQuotaList =
    QStringLiteral("QuantitativeStockSelection_QuotationQuotaList");
const QString SettingSecurityPoolAccountClassifyInfo =
    QStringLiteral("SecurityPoolAccountClassifyInfo");
const QString SettingStrategyLogStrategyID = QStringLiteral("Strategy_Log_StrategyID");
const QString SettingStrategyLogStrategyName = QStringLiteral("Strategy_Log_StrategyName");
const QString SettingStrategyLogSymbol = QStringLiteral("Strategy_Log_Symbol");
const QString SettingUserConfirmData = QStringLiteral("User_Confirm_Data");
const QString SettingUserConfirmPluginID = QStringLiteral("User_Confirm_Plugin_ID");
const QString SettingUserConfirmType = QStringLiteral("User_Confirm_Type");
const QString SettingETFTradeOrderType = QStringLiteral("ETFTradeOrderType");
const QString SettingOddLotQtyGetType = QStringLiteral("OddLotQtyGetType");

// Table-header roles.
const QString HeadColumnIndex = QStringLiteral("Head_ColumnIndex");
const QString HeadDisplayRole = QStringLiteral("Head_DisplayRole");
const QString HeadFormatRole = QStringLiteral("Head_FormatRole");
const QString HeadGroupId = QStringLiteral("Head_GroupId");
const QString HeadGroupName = QStringLiteral("Head_GroupName");
const QString HeadShowRole = QStringLiteral("Head_ShowRole");
const QString HeadUserRole = QStringLiteral("Head_UserRole");

// Market index codes.
const QString MarketIndex1001 = QStringLiteral("MDI1001.KX");
const QString MarketIndex1002 = QStringLiteral("MDI1002.KX");
const QString MarketIndex1003 = QStringLiteral("MDI1003.KX");
const QString MarketIndex1004 = QStringLiteral("MDI1004.KX");
const QString MarketIndex1005 = QStringLiteral("MDI1005.KX");
const QString MarketIndex1006 = QStringLiteral("MDI1006.KX");
const QString MarketIndex1007 = QStringLiteral("MDI1007.KX");
const QString MarketIndex1008 = QStringLiteral("MDI1008.KX");
const QString MarketIndex1009 = QStringLiteral("MDI1009.KX");
const QString MarketIndex1010 = QStringLiteral("MDI1010.KX");

// Time formats, colours, separators, fillers, words, digits, numeric codes.
const QString TimeFormatHmmsszzz = QStringLiteral("hmmsszzz");
const QString ColorDarkBackground = QStringLiteral("#303741");
const QString ColorTranslucentWhite = QStringLiteral("rgba(255,255,255,150)");
const QString SeparatorDash = QStringLiteral(" — ");
const QString PercentPercent = QStringLiteral("%%");
const QString SeparatorAt = QStringLiteral("@");
const QString FillerCommas = QStringLiteral(",,,,,");
const QString FillerOnePointZeroZero = QStringLiteral("1.00");
const QString WordTrue = QStringLiteral("true");
const QString WordFalse = QStringLiteral("false");
const QString Digit0 = QStringLiteral("0");
const QString Digit1 = QStringLiteral("1");
const QString Digit2 = QStringLiteral("2");
const QString Digit3 = QStringLiteral("3");
const QString Digit4 = QStringLiteral("4");
const QString Digit5 = QStringLiteral("5");
const QString Digit6 = QStringLiteral("6");
const QString Digit7 = QStringLiteral("7");
const QString Digit8 = QStringLiteral("8");
const QString Digit9 = QStringLiteral("9");
const QString Code10012 = QStringLiteral("10012");
const QString Code10016 = QStringLiteral("10016");
const QString Code11048 = QStringLiteral("11048");
const QString Code11049 = QStringLiteral("11049");
const QString Code11050 = QStringLiteral("11050");
const QString Code11051 = QStringLiteral("11051");
const QString Code11207 = QStringLiteral("11207");
const QString Code11489 = QStringLiteral("11489");
const QString Code57001 = QStringLiteral("57001");
const QString Code57118 = QStringLiteral("57118");

// T0 style words.
const QString T0StyleType = QStringLiteral("T0_styleType");
const QString T0StyleConservative = QStringLiteral("Conservative");
const QString T0StyleBalance = QStringLiteral("Balance");
const QString T0StyleAggressive = QStringLiteral("Aggressive");

// Rush-limit-up algo names and their word list.
const QStringList RushLimitUpAlgoNames = {
    QStringLiteral("RushLimitUp"), QStringLiteral("RushLimitUpPro"),
};
const QStringList RushLimitUpWords = {Digit1, Digit0, Digit2, Digit3};

// Display labels.
const QString LabelCode = QStringLiteral("代码");
const QString LabelSecurityCode = QStringLiteral("证券代码");
const QString LabelSecurityName = QStringLiteral("证券名称");
const QString LabelMarket = QStringLiteral("市场");
const QString LabelAssetAccount = QStringLiteral("资产账号");
const QString LabelTradeDirection = QStringLiteral("交易方向");
const QString LabelOrderDirection = QStringLiteral("委托方向");
const QString LabelOrderQty = QStringLiteral("委托数量");
const QString LabelOrderAmount = QStringLiteral("委托金额");
const QString LabelOrderProperty = QStringLiteral("委托属性");
const QString LabelQuantity = QStringLiteral("数量");
const QString LabelAvailableQty = QStringLiteral("可用数量");
const QString LabelAvailablePositionRatio = QStringLiteral("可用持仓比例");
const QString LabelPositionQty = QStringLiteral("持仓数量");
const QString LabelSellOrderAmount = QStringLiteral("卖单金额");
const QString LabelSealedOrderQty = QStringLiteral("封单数量");
const QString LabelSealedOrderAmount = QStringLiteral("封单金额");
const QString LabelCallAuctionRatio = QStringLiteral("参与集合竞价比例");
const QString LabelEnhancedParams = QStringLiteral("增强参数");
const QString LabelInstanceRemark = QStringLiteral("实例备注");
const QString LabelStyleType = QStringLiteral("风格类型");
const QString LabelStopLossRatio = QStringLiteral("止损比率");
const QString LabelOpenPrice = QStringLiteral("开盘价");
const QString LabelClosePrice = QStringLiteral("收盘价");
const QString LabelPreviousClose = QStringLiteral("昨收");
const QString LabelLastPrice = QStringLiteral("最新价");
const QString LabelLimitUpPrice = QStringLiteral("涨停价");
const QString LabelLimitDownPrice = QStringLiteral("跌停价");

// Status labels.
const QString StatusLabelNotStarted = QStringLiteral("未启动");
const QString StatusLabelToBeCreated = QStringLiteral("待创建");
const QString StatusLabelCreating = QStringLiteral("创建中");
const QString StatusLabelRun = QStringLiteral("运行");
const QString StatusLabelRunning = QStringLiteral("运行中");
const QString StatusLabelPause = QStringLiteral("暂停");
const QString StatusLabelPaused = QStringLiteral("已暂停");
const QString StatusLabelStop = QStringLiteral("停止");
const QString StatusLabelStopped = QStringLiteral("已停止");
const QString StatusLabelStoppedNotClosed = QStringLiteral("已停止未平仓");
const QString StatusLabelDone = QStringLiteral("完成");
const QString StatusLabelCompleted = QStringLiteral("已完成");
const QString StatusLabelUndefined = QStringLiteral("未定义");

// Import-template header lines, columns separated by "|".
const QString ImportHeaderBasic = QStringLiteral(
    "证券代码|证券名称|市场|委托数量|交易方向|委托限价|单笔最大|委托间隔|扫盘比例(%)|委托档位|"
    "撤单时间|开始时间|结束时间|委托属性|备注|创建后是否立即启动");
const QString ImportHeaderAlgo = QStringLiteral(
    "证券代码|证券名称|市场|委托数量|交易方向|委托限价|算法开始时间|算法过期时间|委托属性|"
    "最大市场占比|风格参数|涨停不卖跌停不买|备注|创建后是否立即启动");
const QString ImportHeaderAlgoRemark = QStringLiteral(
    "证券代码|证券名称|市场|委托数量|交易方向|限价|算法开始时间|算法过期时间|委托属性|"
    "最大市场占比|风格参数|涨停不卖跌停不买|实例备注|创建后是否立即启动");

// Algo-name lists.
const QStringList ConditionOrderAlgoNames = {
    QStringLiteral("ConditionArrive"), QStringLiteral("TimeCondition"),
    AlgoGridTrading, AlgoGridTradingYmd,
    QStringLiteral("ConditionOrderStrategyNew"), QStringLiteral("PriceVelocityStrategy"),
    QStringLiteral("PriceLimits"), QStringLiteral("MACondition"),
};
const QStringList GridAndConditionAlgoNames = {
    QStringLiteral("ConditionArrive"), QStringLiteral("ConditionOrderStrategyNew"),
    AlgoGridTrading, AlgoGridTradingYmd, QStringLiteral("GridTradingSingleStrategy"),
};
const QStringList LockAlgoNames = {
    QStringLiteral("AILOCK"), QStringLiteral("AILOCKPLUS"), QStringLiteral("AILOCK3"),
};
const QStringList ThirdPartyTwapVwapAlgoNames = {
    QStringLiteral("AITWAP7"), QStringLiteral("QND_TWAP"), QStringLiteral("QND_VWAP"),
    QStringLiteral("YR_TWAP"), QStringLiteral("YR_VWAP"), QStringLiteral("FT_TWAPPLUS"),
    QStringLiteral("FT_VWAPPLUS"),
};
const QStringList YrAndPursueGyAlgoNames = {
    QStringLiteral("YR_TWAP"), QStringLiteral("YR_VWAP"), QStringLiteral("PursueHighLimitGY"),
};
const QStringList SmartAndAiAlgoNames = {
    QStringLiteral("SMARTTWAPTW"), QStringLiteral("SMARTVWAPTW"), QStringLiteral("SMARTPOV"),
    QStringLiteral("SMARTSNIPER"), QStringLiteral("AITWAP"), QStringLiteral("AITWAP3"),
    QStringLiteral("AITWAPBASIC"), QStringLiteral("AIVWAP"), QStringLiteral("AIVWAPBASIC"),
    QStringLiteral("AIPOV"), QStringLiteral("AIPOVBASIC"), QStringLiteral("VWAP"),
    QStringLiteral("POV"), QStringLiteral("ICEBERG"), QStringLiteral("AITWAPZJC"),
    QStringLiteral("AIVWAPZJC"), QStringLiteral("AIPOVZJC"), QStringLiteral("AITWAPPLUS"),
    QStringLiteral("AIVWAPPLUS"), QStringLiteral("AIPOVPLUS"), QStringLiteral("SUPERTWAP"),
    QStringLiteral("SUPERVWAP"), QStringLiteral("KF_TWAPPLUS"), QStringLiteral("KF_VWAPPLUS"),
    QStringLiteral("AIVWAP3"), QStringLiteral("FT_TWAPPLUS"), QStringLiteral("FT_VWAPPLUS"),
};
const QStringList AiSecondGenerationAlgoNames = {
    QStringLiteral("AITWAP4"), QStringLiteral("AIVWAP2"), QStringLiteral("AIPOVZJC2"),
    QStringLiteral("AITWAPZJC2"), QStringLiteral("AIVWAPZJC2"), QStringLiteral("AIPOVZJC4"),
    QStringLiteral("AITWAPZJC4"), QStringLiteral("AIVWAPZJC4"), QStringLiteral("AITWAP8"),
    QStringLiteral("AITWAPZJC6"), QStringLiteral("AITWAPZJC7"),
};
const QStringList KfAlgoNames = {
    QStringLiteral("KF_VWAPPLUS"), QStringLiteral("KF_TWAPPLUS"),
};
const QStringList AiBasicAlgoNames = {
    QStringLiteral("AIPOVBASIC"), QStringLiteral("AITWAPBASIC"), QStringLiteral("AIVWAPBASIC"),
    QStringLiteral("POV"), QStringLiteral("VWAP"), QStringLiteral("AIPOVPLUS"),
    QStringLiteral("AIPOVZJC"), QStringLiteral("AITWAPPLUS"), QStringLiteral("AITWAPZJC"),
    QStringLiteral("AIVWAPPLUS"), QStringLiteral("AIVWAPZJC"), QStringLiteral("AIPOV"),
    QStringLiteral("AITWAP3"), QStringLiteral("AIVWAP"), QStringLiteral("AIVWAP3"),
};
const QStringList IcebergSniperAlgoNames = {
    QStringLiteral("ICEBERG2"), QStringLiteral("SNIPER"),
};
const QStringList AiFullAlgoNames = {
    QStringLiteral("AIPAIR"), QStringLiteral("AITWAP"), QStringLiteral("AITWAP3"),
    QStringLiteral("AIVWAP"), QStringLiteral("AIVWAP3"), QStringLiteral("AIPOV"),
    QStringLiteral("AITWAP4"), QStringLiteral("AIVWAP2"), QStringLiteral("AIVWAP4"),
    QStringLiteral("AITWAP2"), QStringLiteral("AIPOVZJC2"), QStringLiteral("AITWAPZJC2"),
    QStringLiteral("AIVWAPZJC2"), QStringLiteral("AITWAPBASIC"), QStringLiteral("AITWAPPLUS"),
    QStringLiteral("AITWAPBASIC2"), QStringLiteral("AITWAPPLUS2"), QStringLiteral("AIVWAPBASIC"),
    QStringLiteral("AIVWAPPLUS"), QStringLiteral("AIVWAPBASIC2"), QStringLiteral("AIVWAPPLUS2"),
    QStringLiteral("AIPOVBASIC"), QStringLiteral("AIPOVBASIC2"), QStringLiteral("AIPOVPLUS"),
    QStringLiteral("AIPOVPLUS2"), QStringLiteral("AIPOVZJC4"), QStringLiteral("AIVWAPZJC4"),
    QStringLiteral("AITWAPZJC4"), QStringLiteral("SCALINGPOV2"), QStringLiteral("SCALINGPOV4"),
    QStringLiteral("AITWAP8"), QStringLiteral("AIPOVZJC3"), QStringLiteral("AIPOVZJC5"),
    QStringLiteral("AITWAPZJC3"), QStringLiteral("AITWAPZJC5"), QStringLiteral("AITWAP9"),
    QStringLiteral("AIVWAPZJC3"), QStringLiteral("AIVWAPZJC5"), QStringLiteral("AITWAPZJC6"),
    QStringLiteral("AITWAPZJC7"),
};
const QStringList MixedVendorAlgoNames = {
    QStringLiteral("AIPOV"), QStringLiteral("AITWAP3"), QStringLiteral("AIVWAP"),
    QStringLiteral("SUPERTWAP"), QStringLiteral("SUPERVWAP"), QStringLiteral("KF_TWAPPLUS"),
    QStringLiteral("KF_VWAPPLUS"), QStringLiteral("DoubleConditionOrder"),
    QStringLiteral("QND_TWAP"), QStringLiteral("QND_VWAP"), QStringLiteral("PursueHighLimit"),
    QStringLiteral("PursueHighLimitPLUS"), QStringLiteral("ZC_SMART"),
    QStringLiteral("FT_TWAPPLUS"), QStringLiteral("FT_VWAPPLUS"), QStringLiteral("SMARTTWAPTW"),
};
const QStringList ApiAlgoNames = {
    QStringLiteral("API-AIPOV"), QStringLiteral("AIPOV"), QStringLiteral("AITWAP"),
    QStringLiteral("AITWAP3"), QStringLiteral("AIVWAP"), QStringLiteral("AIVWAP3"),
    QStringLiteral("AIPAIR"),
};
const QStringList ZjcThirdGenerationAlgoNames = {
    QStringLiteral("AIPOVZJC3"), QStringLiteral("AIPOVZJC5"), QStringLiteral("AITWAPZJC3"),
    QStringLiteral("AITWAPZJC5"), QStringLiteral("AITWAP9"), QStringLiteral("AIVWAPZJC3"),
    QStringLiteral("AIVWAPZJC5"),
};
const QStringList SmartTAlgoNames = {
    QStringLiteral("KF_VWAPPLUS"), QStringLiteral("KF_TWAPPLUS"), QStringLiteral("smarT_Y"),
    QStringLiteral("smarT_Q"), QStringLiteral("smarT_Z"), QStringLiteral("smarT_ZNYX"),
    QStringLiteral("QND_TWAP"), QStringLiteral("QND_VWAP"), QStringLiteral("smarT_T"),
    QStringLiteral("smarT_I"),
};
const QStringList SmartFamilyAlgoNames = {
    QStringLiteral("SMARTPOV"), QStringLiteral("SMARTTWAPEX"), QStringLiteral("SMARTTWAPTW"),
    QStringLiteral("SMARTSNIPER"), QStringLiteral("SMARTPOVTW"), QStringLiteral("SMARTPOVCZ"),
    QStringLiteral("SMARTVWAPYG"), QStringLiteral("SMARTVWAPEX"), QStringLiteral("SMARTVWAPTW"),
    QStringLiteral("ICEBERG"), QStringLiteral("KF_TWAPPLUS"), QStringLiteral("KF_VWAPPLUS"),
    QStringLiteral("PursueHighLimit"), QStringLiteral("PursueHighLimitB"),
    QStringLiteral("PursueHighLimitPLUS"), QStringLiteral("PursueHighLimitGY"),
    QStringLiteral("DoubleConditionOrder"), QStringLiteral("DoubleConditionOrderPLUS"),
    QStringLiteral("YGTWAPExt"), QStringLiteral("AILOCK"), QStringLiteral("AILOCKPLUS"),
    QStringLiteral("AILOCK3"), QStringLiteral("ZC_SMART"), QStringLiteral("ZC_POV"),
    QStringLiteral("QND_TWAP"), QStringLiteral("QND_VWAP"), QStringLiteral("YR_TWAP"),
    QStringLiteral("YR_VWAP"),
};
const QStringList SmartTExtraAlgoNames = {
    QStringLiteral("smarT_F"), QStringLiteral("smarT_J"), QStringLiteral("smarT_ZY"),
    QStringLiteral("smarT_HX"),
};
const QStringList ConditionAndAiAlgoNames = {
    QStringLiteral("PursueHighLimitPLUS"), QStringLiteral("PursueHighLimit"),
    QStringLiteral("PursueHighLimitB"), QStringLiteral("DoubleConditionOrderPLUS"),
    QStringLiteral("DoubleConditionOrder"), AlgoGridTrading, AlgoGridTradingYmd,
    QStringLiteral("MACDStrategy"), QStringLiteral("PriceVelocityStrategy"),
    QStringLiteral("ConditionArrive"), QStringLiteral("MACondition"),
    QStringLiteral("TimeCondition"), QStringLiteral("ConditionOrderStrategyPro"),
    QStringLiteral("BatchTrade"), QStringLiteral("PriceLimits"),
    QStringLiteral("ConditionOrderStrategyNew"), QStringLiteral("AIPOV"),
    QStringLiteral("AIPOVBASIC"), QStringLiteral("AIPOVPLUS"), QStringLiteral("AITWAPBASIC"),
    QStringLiteral("AITWAP"), QStringLiteral("AITWAP3"), QStringLiteral("AITWAPPLUS"),
    QStringLiteral("AIVWAPBASIC"), QStringLiteral("AIVWAP"), QStringLiteral("AIVWAPPLUS"),
    QStringLiteral("AIVWAP3"), QStringLiteral("AITWAPZJC"), QStringLiteral("VWAP"),
    QStringLiteral("AIVWAPZJC"), QStringLiteral("POV"), QStringLiteral("AIPOVZJC"),
    QStringLiteral("ICEBERG"), QStringLiteral("SUPERTWAP"), QStringLiteral("SUPERVWAP"),
    QStringLiteral("GridTradingSingleStrategy"),
};
const QStringList AiAndGridAlgoNames = {
    QStringLiteral("AIPOV"), QStringLiteral("AIPOVBASIC"), QStringLiteral("AIPOVPLUS"),
    QStringLiteral("AITWAPBASIC"), QStringLiteral("AITWAP"), QStringLiteral("AITWAP3"),
    QStringLiteral("AITWAPPLUS"), QStringLiteral("AIVWAPBASIC"), QStringLiteral("AIVWAP"),
    QStringLiteral("AIVWAPPLUS"), QStringLiteral("AIVWAP3"), QStringLiteral("AITWAPZJC"),
    QStringLiteral("VWAP"), QStringLiteral("AIVWAPZJC"), QStringLiteral("POV"),
    QStringLiteral("AIPOVZJC"), AlgoGridTrading, QStringLiteral("SUPERTWAP"),
    QStringLiteral("SUPERVWAP"), QStringLiteral("GridTradingSingleStrategy"),
};
const QStringList PairAndAiAlgoNames = {
    QStringLiteral("AIPAIR"), QStringLiteral("AIPAIRBASIC"), QStringLiteral("AIPAIRPLUS"),
    QStringLiteral("AIVWAP3"), QStringLiteral("AIVWAP"), QStringLiteral("AITWAP"),
    QStringLiteral("AITWAP3"), QStringLiteral("AIPOV"), QStringLiteral("AITWAPBASIC"),
    QStringLiteral("AITWAPPLUS"), QStringLiteral("AIVWAPBASIC"), QStringLiteral("AIVWAPPLUS"),
    QStringLiteral("AIPOVBASIC"), QStringLiteral("AIPOVPLUS"), QStringLiteral("AIPOVZJC"),
    QStringLiteral("AITWAPZJC"), QStringLiteral("AIVWAPZJC"), QStringLiteral("TWAP-C"),
    QStringLiteral("VWAP"), QStringLiteral("POV"), QStringLiteral("SUPERVWAP"),
    QStringLiteral("SUPERTWAP"), QStringLiteral("SMARTSNIPER"),
};

} // namespace AlgoConst
