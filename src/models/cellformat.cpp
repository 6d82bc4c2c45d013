#include "models/cellformat.h"

#include "common/algoconstants.h"

#include <QHash>
#include <QLocale>
#include <QStringList>

#include <cmath>

namespace AlgoLogic {
namespace Cells {

namespace {

const QLocale& numberLocale()
{
    static const QLocale locale(QLocale::English, QLocale::UnitedStates);
    return locale;
}

const QString kTimeFormat = QStringLiteral("yyyy-MM-dd hh:mm:ss");

SnapshotCell make(const QVariant& value, const QString& text, const QString& toolTip)
{
    SnapshotCell cell;
    cell.value = value;
    cell.text = text;
    cell.toolTip = toolTip;
    return cell;
}

} // namespace

QString statusLabel(const QString& code)
{
    // The server's status codes and the labels the terminal shows for them.
    static const QHash<QString, QString> labels{
        {QStringLiteral("0"), AlgoConst::StatusLabelNotStarted},
        {QStringLiteral("1"), AlgoConst::StatusLabelRunning},
        {QStringLiteral("2"), AlgoConst::StatusLabelCompleted},
        {QStringLiteral("3"), AlgoConst::StatusLabelToBeCreated},
        {QStringLiteral("4"), AlgoConst::StatusLabelPaused},
        {QStringLiteral("5"), AlgoConst::StatusLabelStopped},
        {QStringLiteral("6"), AlgoConst::StatusLabelCreating},
        {QStringLiteral("7"), AlgoConst::StatusLabelStoppedNotClosed},
    };
    return labels.value(code, code);
}

QString describe(std::initializer_list<std::pair<const char*, QString>> lines)
{
    QStringList parts;
    for (const auto& line : lines) {
        if (!line.second.isEmpty())
            parts.append(QLatin1String(line.first) + QStringLiteral(": ") + line.second);
    }
    return parts.join(QLatin1Char('\n'));
}

QString quantityText(double value)
{
    const bool whole = std::isfinite(value) && value == std::round(value);
    return numberLocale().toString(value, 'f', whole ? 0 : 2);
}

QString ratioText(double value)
{
    return numberLocale().toString(value * 100.0, 'f', 1) + QLatin1Char('%');
}

SnapshotCell text(const QString& value, const QString& toolTip)
{
    return make(value, value, toolTip);
}

SnapshotCell quantity(double value, const QString& toolTip)
{
    return make(value, quantityText(value), toolTip);
}

SnapshotCell amount(double value, const QString& toolTip)
{
    return make(value, numberLocale().toString(value, 'f', 2), toolTip);
}

SnapshotCell price(double value, const QString& toolTip)
{
    return make(value, value == 0.0 ? QString() : numberLocale().toString(value, 'f', 3),
                toolTip);
}

SnapshotCell ratio(double value, const QString& toolTip)
{
    return make(value, ratioText(value), toolTip);
}

SnapshotCell time(const QDateTime& value)
{
    return make(value, value.isValid() ? value.toString(kTimeFormat) : QString(), QString());
}

SnapshotCell status(const QString& code, const QString& toolTip)
{
    QString tip = code.isEmpty() ? QString() : QStringLiteral("Status code %1").arg(code);
    if (!toolTip.isEmpty())
        tip += (tip.isEmpty() ? QString() : QStringLiteral("\n")) + toolTip;
    return make(code, statusLabel(code), tip);
}

SnapshotCell queueFigure(double value)
{
    return make(value, value < 0.0 ? QString() : quantityText(value), QString());
}

SnapshotCell none()
{
    return SnapshotCell();
}

} // namespace Cells
} // namespace AlgoLogic
