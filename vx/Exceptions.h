#pragma once

#include "vx/Exception.h"

#include <new>

namespace vx {

class VX_API CastFailedException : public Exception {
public:
    using Exception::Exception;
    ~CastFailedException() noexcept override;
};

class VX_API ClassNotFoundException : public Exception {
public:
    using Exception::Exception;
    ~ClassNotFoundException() noexcept override;
};

class VX_API CloneNotSupportedException : public Exception {
public:
    using Exception::Exception;
    ~CloneNotSupportedException() noexcept override;
};

class VX_API IllegalAccessException : public Exception {
public:
    using Exception::Exception;
    ~IllegalAccessException() noexcept override;
};

class VX_API IllegalStateException : public Exception {
public:
    using Exception::Exception;
    ~IllegalStateException() noexcept override;
};

class VX_API InvalidPathException : public Exception {
public:
    using Exception::Exception;
    ~InvalidPathException() noexcept override;
};

class VX_API RangeErrorException : public Exception {
public:
    using Exception::Exception;
    ~RangeErrorException() noexcept override;
};

class VX_API ReadOnlyException : public Exception {
public:
    using Exception::Exception;
    ~ReadOnlyException() noexcept override;
};

class VX_API UnsupportedOperationException : public Exception {
public:
    using Exception::Exception;
    ~UnsupportedOperationException() noexcept override;
};

/// Handlers of either base catch it.
class VX_API OutOfMemoryException : public Exception, public std::bad_alloc {
public:
    OutOfMemoryException() noexcept;
    OutOfMemoryException(const OutOfMemoryException& other) noexcept;
    OutOfMemoryException& operator=(const OutOfMemoryException& other);
    ~OutOfMemoryException() noexcept override;

    // Exception
    std::int32_t getResult() const override;

    // std::bad_alloc
    const char* what() const noexcept override;
};

/// A fault that the operating system reports. The library raises none of this branch itself but UserAbortException: it is
/// there for code that turns such faults into exceptions.
class VX_API ExternalException : public Exception {
public:
    ExternalException() noexcept = default;
    /// `record` is the system's record of the fault, not owned; copies take the pointer over.
    explicit ExternalException(void* record) noexcept;
    ExternalException(const ExternalException& other) noexcept = default;
    ExternalException& operator=(const ExternalException& other) = default;
    ~ExternalException() noexcept override;

    void* getRecord() const noexcept { return m_record; }

private:
    void* m_record = nullptr;
};

class VX_API AccessViolationException : public ExternalException {
public:
    ~AccessViolationException() noexcept override;
};

class VX_API ArrayBoundsException : public ExternalException {
public:
    ~ArrayBoundsException() noexcept override;
};

class VX_API IllegalInstructionException : public ExternalException {
public:
    ~IllegalInstructionException() noexcept override;
};

class VX_API StackOverflowException : public ExternalException {
public:
    ~StackOverflowException() noexcept override;
};

class VX_API UserAbortException : public ExternalException {
public:
    ~UserAbortException() noexcept override;
};

class VX_API IntErrorException : public ExternalException {
public:
    ~IntErrorException() noexcept override;
};

class VX_API IntDivByZeroException : public IntErrorException {
public:
    ~IntDivByZeroException() noexcept override;
};

class VX_API IntOverflowException : public IntErrorException {
public:
    ~IntOverflowException() noexcept override;
};

class VX_API MathErrorException : public ExternalException {
public:
    ~MathErrorException() noexcept override;
};

class VX_API MathDivByZeroException : public MathErrorException {
public:
    ~MathDivByZeroException() noexcept override;
};

class VX_API MathInvalidOpException : public MathErrorException {
public:
    ~MathInvalidOpException() noexcept override;
};

class VX_API MathOverflowException : public MathErrorException {
public:
    ~MathOverflowException() noexcept override;
};

class VX_API MathUnderflowException : public MathErrorException {
public:
    ~MathUnderflowException() noexcept override;
};

} // namespace vx
