#pragma once

// Instances of every class as the example sessions create them, for tests
// and fuzz targets that need realistic instances with legs in numbers.

#include <algologic.h>

#include <QString>

#include <memory>

namespace ExampleInstances {

enum class InstanceClass { Normal, T0, Multi, RushLimitUp, Count };

// The creation record and the legs' set-up of one example instance.
struct Prototype
{
    QString algoType;
    QString algoName;
    VariantMap record;      // for CreateInstance / initInfo
    VariantMap params;      // for UpdateSymbolExtInfoByParams
    VariantMapList extRecords;
};

// The prototype of the class, renamed to `instanceID` (also its client ID
// "cl-<instanceID>") when one is given. Loaded once from the examples.
Prototype prototype(InstanceClass cls, const QString& instanceID = QString());

// A fresh, unregistered instance with its legs. The caller owns it.
std::unique_ptr<InstanceInfoBase> makeInstance(InstanceClass cls,
                                               const QString& instanceID = QString());

// Creates, registers and builds the legs of an instance, as a host does on
// the creation answer. Returns the registered object.
InstanceInfoBase* registerInstance(InstanceClass cls, const QString& instanceID);

// The ID of the prototype itself.
QString prototypeId(InstanceClass cls);

} // namespace ExampleInstances
