#include "vx/Exceptions.h"

#include "vx/Result.h"

namespace vx {

CastFailedException::~CastFailedException() noexcept = default;
ClassNotFoundException::~ClassNotFoundException() noexcept = default;
CloneNotSupportedException::~CloneNotSupportedException() noexcept = default;
IllegalAccessException::~IllegalAccessException() noexcept = default;
IllegalStateException::~IllegalStateException() noexcept = default;
InvalidPathException::~InvalidPathException() noexcept = default;
RangeErrorException::~RangeErrorException() noexcept = default;
ReadOnlyException::~ReadOnlyException() noexcept = default;
UnsupportedOperationException::~UnsupportedOperationException() noexcept = default;

OutOfMemoryException::OutOfMemoryException() noexcept = default;
OutOfMemoryException::OutOfMemoryException(const OutOfMemoryException& other) noexcept = default;
OutOfMemoryException& OutOfMemoryException::operator=(const OutOfMemoryException& other) = default;
OutOfMemoryException::~OutOfMemoryException() noexcept = default;

std::int32_t OutOfMemoryException::getResult() const
{
    return RESULT_OUT_OF_MEMORY;
}

const char* OutOfMemoryException::what() const noexcept
{
    return "bad allocation";
}

ExternalException::ExternalException(void* record) noexcept
    : m_record(record)
{
}

ExternalException::~ExternalException() noexcept = default;
AccessViolationException::~AccessViolationException() noexcept = default;
ArrayBoundsException::~ArrayBoundsException() noexcept = default;
IllegalInstructionException::~IllegalInstructionException() noexcept = default;
StackOverflowException::~StackOverflowException() noexcept = default;
UserAbortException::~UserAbortException() noexcept = default;
IntErrorException::~IntErrorException() noexcept = default;
IntDivByZeroException::~IntDivByZeroException() noexcept = default;
IntOverflowException::~IntOverflowException() noexcept = default;
MathErrorException::~MathErrorException() noexcept = default;
MathDivByZeroException::~MathDivByZeroException() noexcept = default;
MathInvalidOpException::~MathInvalidOpException() noexcept = default;
MathOverflowException::~MathOverflowException() noexcept = default;
MathUnderflowException::~MathUnderflowException() noexcept = default;

} // namespace vx
