#pragma once

// The terminal's thread class. A plain QThread that, unlike QThread, may be
// destroyed while running: the destructor asks the event loop to quit and
// waits for it.

#include "common/algologicglobal.h"

#include <QThread>

class ALGOLOGIC_EXPORT KxThread : public QThread
{
    Q_OBJECT
public:
    explicit KxThread(QObject* parent = nullptr);
    ~KxThread() override;
};
