#pragma once

#include "vx/Exception.h"

#include <new>

namespace vx {

/// An object has another class than the operation needs, for example the argument of a `compareTo`.
class VX_API CastFailedException : public Exception {
public:
    using Exception::Exception;
    ~CastFailedException() noexcept override;
};

/// A class that is not in the registry. The description is its name.
class VX_API ClassNotFoundException : public Exception {
public:
    using Exception::Exception;
    ~ClassNotFoundException() noexcept override;
};

/// A call of `clone` for an object whose class does not support it.
class VX_API CloneNotSupportedException : public Exception {
public:
    using Exception::Exception;
    ~CloneNotSupportedException() noexcept override;
};

/// A class that is known but cannot be created by its name.
class VX_API IllegalAccessException : public Exception {
public:
    using Exception::Exception;
    ~IllegalAccessException() noexcept override;
};

/// A call at the wrong time: a second `join`, or one before the library has started.
class VX_API IllegalStateException : public Exception {
public:
    using Exception::Exception;
    ~IllegalStateException() noexcept override;
};

/// A text that is no path, or names nothing that the operation can use.
class VX_API InvalidPathException : public Exception {
public:
    using Exception::Exception;
    ~InvalidPathException() noexcept override;
};

/// An index, a size or a number outside of what the operation allows.
class VX_API RangeErrorException : public Exception {
public:
    using Exception::Exception;
    ~RangeErrorException() noexcept override;
};

/// A write to a buffer that may only be read.
class VX_API ReadOnlyException : public Exception {
public:
    using Exception::Exception;
    ~ReadOnlyException() noexcept override;
};

/// An operation that the class does not support, although its interface has it.
class VX_API UnsupportedOperationException : public Exception {
public:
    using Exception::Exception;
    ~UnsupportedOperationException() noexcept override;
};

/// Thrown by the new handler of the library when `vxsys::allocate` finds no memory. Handlers of either base catch it.
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

/// A fault that the operating system reports. Of this branch the library itself throws only UserAbortException; the
/// others are for programs that turn such faults into exceptions.
class VX_API ExternalException : public Exception {
public:
    ExternalException() noexcept = default;
    /// `record` is the system's record of the fault. It is not owned, and copies have the same pointer.
    explicit ExternalException(void* record) noexcept;
    ExternalException(const ExternalException& other) noexcept = default;
    ExternalException& operator=(const ExternalException& other) = default;
    ~ExternalException() noexcept override;

    /// Null if no record was given.
    void* getRecord() const noexcept { return m_record; }

private:
    void* m_record = nullptr;
};

/// An access to memory that does not belong to the process.
class VX_API AccessViolationException : public ExternalException {
public:
    ~AccessViolationException() noexcept override;
};

/// An index that the processor found to be out of bounds.
class VX_API ArrayBoundsException : public ExternalException {
public:
    ~ArrayBoundsException() noexcept override;
};

/// An instruction that the processor does not have, or does not allow in this process.
class VX_API IllegalInstructionException : public ExternalException {
public:
    ~IllegalInstructionException() noexcept override;
};

/// A thread that has used up its stack.
class VX_API StackOverflowException : public ExternalException {
public:
    ~StackOverflowException() noexcept override;
};

/// The user has pressed Ctrl-C. Thrown by io::MaskedConsoleInputStream.
class VX_API UserAbortException : public ExternalException {
public:
    ~UserAbortException() noexcept override;
};

/// Base of the faults of integer arithmetic.
class VX_API IntErrorException : public ExternalException {
public:
    ~IntErrorException() noexcept override;
};

/// An integer divided by 0.
class VX_API IntDivByZeroException : public IntErrorException {
public:
    ~IntDivByZeroException() noexcept override;
};

/// An integer result that does not fit.
class VX_API IntOverflowException : public IntErrorException {
public:
    ~IntOverflowException() noexcept override;
};

/// Base of the faults of floating-point arithmetic (IEEE 754), for programs that have enabled the traps of the
/// processor.
class VX_API MathErrorException : public ExternalException {
public:
    ~MathErrorException() noexcept override;
};

/// A finite number divided by 0.
class VX_API MathDivByZeroException : public MathErrorException {
public:
    ~MathDivByZeroException() noexcept override;
};

/// An operation without a result, for example 0 divided by 0.
class VX_API MathInvalidOpException : public MathErrorException {
public:
    ~MathInvalidOpException() noexcept override;
};

/// A result too large for its type.
class VX_API MathOverflowException : public MathErrorException {
public:
    ~MathOverflowException() noexcept override;
};

/// A result too small for its type.
class VX_API MathUnderflowException : public MathErrorException {
public:
    ~MathUnderflowException() noexcept override;
};

} // namespace vx
