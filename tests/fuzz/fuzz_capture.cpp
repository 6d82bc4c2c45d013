// A fuzzed session capture, read and replayed in full, then rendered the way
// algo-replay prints its result (every accessor of every instance and leg).

#include "fuzzsupport.h"

#include "replayer.h"
#include "snapshot.h"

#include <QBuffer>
#include <QTextStream>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzSupport::startQt();
    QString errorText;
    QTextStream errors(&errorText);
    AlgoReplay::Replayer replayer(AlgoReplay::ReplayOptions(), errors);

    QByteArray capture(reinterpret_cast<const char*>(data), int(size));
    QBuffer device(&capture);
    device.open(QIODevice::ReadOnly);
    replayer.replayDevice(device, QStringLiteral("fuzz"));

    // The snapshot also pops the logs, so the next input starts empty.
    const QJsonObject result = AlgoReplay::snapshot(replayer.instanceIds());
    AlgoReplay::formatTable(AlgoReplay::instancesToJson());
    for (const QString& id : replayer.instanceIds())
        InstanceMgr::instance()->DeleteInstance(id);
    Q_UNUSED(result)
    return 0;
}
