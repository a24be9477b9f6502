#include "server/http/WorkerPool.h"

#include "server/common/Refusal.h"

namespace talvenor::server {

WorkerPool::Place::Place(WorkerPool &pool) : m_pool(pool)
{
    if (m_pool.m_taken.fetch_add(1) >= m_pool.m_places) {
        m_pool.m_taken.fetch_sub(1);
        throw Refusal(Reason::busy);
    }
}

WorkerPool::Place::~Place()
{
    m_pool.m_taken.fetch_sub(1);
}

} // namespace talvenor::server
