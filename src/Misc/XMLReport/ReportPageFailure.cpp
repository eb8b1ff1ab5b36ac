#include <Misc/XMLReport/ReportPageFailure.h>

#include <utility>

namespace {

thread_local ReportPageFailure* Keeper = nullptr;

} // namespace

ReportPageFailure::ReportPageFailure() noexcept
    : m_outer(std::exchange(Keeper, this))
{
}

ReportPageFailure::~ReportPageFailure()
{
    Keeper = m_outer;
}

void ReportPageFailure::rethrow() const
{
    if (m_failure)
        std::rethrow_exception(m_failure);
}

void ReportPageFailure::Keep() noexcept
{
    if (Keeper)
        Keeper->m_failure = std::current_exception();
}
