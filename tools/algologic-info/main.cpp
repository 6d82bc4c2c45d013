// Prints what the library holds: its version, its exported classes with the
// signals of the managers, and the sizes of the constant tables.

#include <algologic.h>

#include <QCoreApplication>
#include <QMetaMethod>
#include <QMetaObject>
#include <QTextStream>

namespace {

void printSignals(QTextStream& out, const QMetaObject& meta)
{
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const char* kind = method.methodType() == QMetaMethod::Signal ? "signal" : "slot";
        out << "    " << kind << ' ' << method.methodSignature() << '\n';
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    out << "AlgoLogic " << ALGOLOGIC_VERSION_STRING << " (Qt " << qVersion() << ")\n\n";

    out << "Managers:\n";
    out << "  StrategyMgr\n";
    printSignals(out, StrategyMgr::staticMetaObject);
    out << "\nInstance and leg classes:\n"
        << "  InstanceInfoBase\n"
        << "  SymbolInfoBase\n"
        << "  T0SymbolInfo\n";
    out << "\nHost stand-ins:\n"
        << "  KxAlgoDataMgr, AesStrategy, CBusinessDataBase, HelmBusinessDataInterface,\n"
        << "  HelmUtils::TransStr2Map, CommonQuotaHandler, KxThread\n";
    out << "\nConstants:\n"
        << "  amount-driven algos (StandardProgressAlgoNames): "
        << StandardProgressAlgoNames.join(QStringLiteral(", ")) << '\n'
        << "  order parameter keys: " << AlgoConst::OrderParamKeys.size() << '\n';
    return 0;
}
