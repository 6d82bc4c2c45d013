#include "platform/kxthread.h"

KxThread::KxThread(QObject* parent)
    : QThread(parent)
{
}

KxThread::~KxThread()
{
    if (isRunning() && QThread::currentThread() != this) {
        quit();
        wait();
    }
}
