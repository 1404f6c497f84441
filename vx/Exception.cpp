#include "vx/Exception.h"

#include "vx/Result.h"
#include "vx/detail/Occasions.h"

#include <new>

namespace vx {

namespace {

class BadAllocation : public std::bad_alloc {
public:
    const char* what() const noexcept override { return "bad allocation"; }
};

} // namespace

Exception::Exception() noexcept = default;

Exception::Exception(const Exception& other) noexcept
    : Object()
    , m_description(other.m_description)
{
    detail::copyOccasion(other, *this);
}

Exception::Exception(const String& description) noexcept
    : m_description(description)
{
}

Exception& Exception::operator=(const Exception& other)
{
    if (this != &other) {
        m_description = other.m_description;
        detail::copyOccasion(other, *this);
    }
    return *this;
}

Exception::~Exception() noexcept
{
    detail::forgetOccasion(*this);
}

String Exception::getDescription() const
{
    return m_description;
}

std::int32_t Exception::getResult() const
{
    return RESULT_FAIL;
}

ResultException::ResultException() noexcept
    : m_result(RESULT_FAIL)
{
}

ResultException::ResultException(const ResultException& other) noexcept = default;

ResultException::ResultException(std::int32_t result) noexcept
    : m_result(result)
{
}

ResultException::ResultException(std::int32_t result, const String& description) noexcept
    : Exception(description)
    , m_result(result)
{
}

ResultException& ResultException::operator=(const ResultException& other) = default;

ResultException::~ResultException() noexcept = default;

std::int32_t ResultException::getResult() const
{
    return m_result;
}

void throwResult(std::int32_t result)
{
    throw ResultException(result);
}

void throwBadAllocation()
{
    throw BadAllocation();
}

} // namespace vx
