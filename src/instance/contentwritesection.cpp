#include "instance/contentwritesection.h"

#include "instance/instancemgr.h"

#include <vector>

namespace {

thread_local int t_depth = 0;
thread_local std::vector<std::function<void()>> t_pending;

} // namespace

ContentWriteSection::ContentWriteSection()
    : m_locker(InstanceMgr::instance()->getLocker())
{
    ++t_depth;
}

ContentWriteSection::~ContentWriteSection()
{
    --t_depth;
    m_locker.unlock();
    if (t_depth > 0)
        return;
    // A receiver may route more traffic and so queue more notifications.
    std::vector<std::function<void()>> pending;
    while (!t_pending.empty()) {
        pending.swap(t_pending);
        for (const std::function<void()>& emitter : pending)
            emitter();
        pending.clear();
    }
    // Hand the capacity back, so that the next section queues without
    // allocating the vector again.
    if (t_pending.capacity() < pending.capacity())
        t_pending.swap(pending);
}

void ContentWriteSection::notify(std::function<void()> emitter)
{
    if (t_depth > 0)
        t_pending.push_back(std::move(emitter));
    else
        emitter();
}
