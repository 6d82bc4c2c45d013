#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

// One record of a server response, and one response or push.
using VariantMap = QMap<QString, QVariant>;
using VariantMapList = QList<VariantMap>;

// Account -> authority category -> algo name -> authority node text.
using AuthorityTable = QMap<QString, QMap<QString, QMap<QString, QString>>>;
