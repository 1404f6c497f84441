#include "vx/detail/ClassTable.h"

#include "vx/ClassManagerBase.h"
#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/io/BufferedInputStream.h"
#include "vx/io/BufferedOutputStream.h"
#include "vx/io/BufferedReader.h"
#include "vx/io/BufferedWriter.h"
#include "vx/io/ByteArrayInputStream.h"
#include "vx/io/ByteArrayOutputStream.h"
#include "vx/io/FilterInputStream.h"
#include "vx/io/FilterOutputStream.h"
#include "vx/io/FilterReader.h"
#include "vx/io/FilterWriter.h"
#include "vx/io/InputStream.h"
#include "vx/io/InputStreamReader.h"
#include "vx/io/IoException.h"
#include "vx/io/NullOutputStream.h"
#include "vx/io/NullWriter.h"
#include "vx/io/OutputStream.h"
#include "vx/io/OutputStreamWriter.h"
#include "vx/io/PrintWriter.h"
#include "vx/io/Reader.h"
#include "vx/io/StringWriter.h"
#include "vx/io/Writer.h"
#include "vx/sync/Atomic.h"
#include "vx/sync/Event.h"
#include "vx/sync/FakeMutex.h"
#include "vx/sync/Gate.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ReaderWriterLock.h"
#include "vx/sync/Semaphore.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/util/ROByteBuffer.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RWByteBuffer.h"
#include "vx/util/RWCharBuffer.h"

#include <typeinfo>

// Stands at the top of the house: it knows every class, and nobody includes it.

namespace vx::detail {

namespace {

struct ClassRow {
    const char16_t* name;
    const std::type_info* type;
    ObjectCreator creator; ///< null: known by name, not creatable
};

template <class T, auto... arguments>
Object* create()
{
    return new T(arguments...);
}

// The first row of a name stands, so that a later one without a creator has no effect.
const ClassRow CLASSES[] = {
    {u"CVXAbstractByteBuffer", &typeid(util::AbstractByteBuffer), nullptr},
    {u"CVXAbstractCharBuffer", &typeid(util::AbstractCharBuffer), nullptr},
    {u"CVXAtomic", &typeid(sync::Atomic), nullptr},
    {u"vx::Class", &typeid(Class), nullptr},
    {u"CVXBufferedInputStream", &typeid(io::BufferedInputStream), nullptr},
    {u"CVXBufferedOutputStream", &typeid(io::BufferedOutputStream), nullptr},
    {u"CVXBufferedReader", &typeid(io::BufferedReader), nullptr},
    {u"CVXBufferedWriter", &typeid(io::BufferedWriter), nullptr},
    {u"CVXByteArrayInputStream", &typeid(io::ByteArrayInputStream), nullptr},
    {u"CVXByteArrayOutputStream", &typeid(io::ByteArrayOutputStream), create<io::ByteArrayOutputStream, 256>},
    {u"CVXComObject", &typeid(ComObject), nullptr},
    {u"CVXEvent", &typeid(sync::Event), create<sync::Event>},
    {u"vx::sync::FakeAtomic", &typeid(sync::FakeAtomic), nullptr},
    {u"CVXFakeMutex", &typeid(sync::FakeMutex), create<sync::FakeMutex>},
    {u"CVXFilterInputStream", &typeid(io::FilterInputStream), nullptr},
    {u"CVXFilterOutputStream", &typeid(io::FilterOutputStream), nullptr},
    {u"CVXFilterReader", &typeid(io::FilterReader), nullptr},
    {u"CVXFilterWriter", &typeid(io::FilterWriter), nullptr},
    {u"CVXGate", &typeid(sync::Gate), create<sync::Gate>},
    {u"CVXInputStream", &typeid(io::InputStream), nullptr},
    {u"CVXInputStreamReader", &typeid(io::InputStreamReader), nullptr},
    {u"CVXLockObject", &typeid(sync::LockObject), nullptr},
    {u"CVXMutex", &typeid(sync::Mutex), create<sync::Mutex>},
    {u"CVXNullOutputStream", &typeid(io::NullOutputStream), create<io::NullOutputStream>},
    {u"CVXNullWriter", &typeid(io::NullWriter), create<io::NullWriter>},
    {u"CVXObject", &typeid(Object), create<Object>},
    {u"CVXOutputStream", &typeid(io::OutputStream), nullptr},
    {u"CVXOutputStreamWriter", &typeid(io::OutputStreamWriter), nullptr},
    {u"CVXPrintWriter", &typeid(io::PrintWriter), nullptr},
    {u"CVXReader", &typeid(io::Reader), nullptr},
    {u"CVXROByteBuffer", &typeid(util::ROByteBuffer), create<util::ROByteBuffer>},
    {u"CVXROCharBuffer", &typeid(util::ROCharBuffer), create<util::ROCharBuffer>},
    {u"CVXRWByteBuffer", &typeid(util::RWByteBuffer), create<util::RWByteBuffer>},
    {u"CVXRWCharBuffer", &typeid(util::RWCharBuffer), create<util::RWCharBuffer>},
    {u"CVXRWLock", &typeid(sync::ReaderWriterLock), create<sync::ReaderWriterLock>},
    {u"CVXSemaphore", &typeid(sync::Semaphore), create<sync::Semaphore, 0U>},
    {u"CVXString", &typeid(String), create<String>},
    {u"CVXStringWriter", &typeid(io::StringWriter), create<io::StringWriter, 0>},
    {u"CVXSyncObject", &typeid(sync::Object), nullptr},
    {u"CVXWriter", &typeid(io::Writer), nullptr},
    {u"vx::AccessViolationException", &typeid(AccessViolationException), nullptr},
    {u"vx::ArrayBoundsException", &typeid(ArrayBoundsException), nullptr},
    {u"vx::CastFailedException", &typeid(CastFailedException), create<CastFailedException>},
    {u"vx::ClassNotFoundException", &typeid(ClassNotFoundException), create<ClassNotFoundException>},
    {u"vx::CloneNotSupportedException", &typeid(CloneNotSupportedException), create<CloneNotSupportedException>},
    {u"vx::Exception", &typeid(Exception), create<Exception>},
    {u"vx::ExternalException", &typeid(ExternalException), nullptr},
    {u"vx::IllegalAccessException", &typeid(IllegalAccessException), create<IllegalAccessException>},
    {u"vx::IllegalInstructionException", &typeid(IllegalInstructionException), nullptr},
    {u"vx::IllegalStateException", &typeid(IllegalStateException), create<IllegalStateException>},
    {u"vx::IntDivByZeroException", &typeid(IntDivByZeroException), create<IntDivByZeroException>},
    {u"vx::IntErrorException", &typeid(IntErrorException), create<IntErrorException>},
    {u"vx::IntOverflowException", &typeid(IntOverflowException), create<IntOverflowException>},
    {u"vx::text::charset::InvalidCharacterException", &typeid(text::charset::InvalidCharacterException),
        create<text::charset::InvalidCharacterException>},
    {u"vx::InvalidPathException", &typeid(InvalidPathException), create<InvalidPathException>},
    {u"vx::io::IoException", &typeid(io::IoException), create<io::IoException>},
    {u"vx::io::TimeoutException", &typeid(io::TimeoutException), create<io::TimeoutException>},
    {u"vx::IntDivByZeroException", &typeid(IntDivByZeroException), nullptr},
    {u"vx::IntErrorException", &typeid(IntErrorException), nullptr},
    {u"vx::IntOverflowException", &typeid(IntOverflowException), nullptr},
    {u"vx::MathDivByZeroException", &typeid(MathDivByZeroException), nullptr},
    {u"vx::MathErrorException", &typeid(MathErrorException), nullptr},
    {u"vx::MathInvalidOpException", &typeid(MathInvalidOpException), nullptr},
    {u"vx::MathOverflowException", &typeid(MathOverflowException), nullptr},
    {u"vx::MathUnderflowException", &typeid(MathUnderflowException), nullptr},
    {u"vx::OutOfMemoryException", &typeid(OutOfMemoryException), create<OutOfMemoryException>},
    {u"vx::RangeErrorException", &typeid(RangeErrorException), create<RangeErrorException>},
    {u"vx::ReadOnlyException", &typeid(ReadOnlyException), create<ReadOnlyException>},
    {u"vx::StackOverflowException", &typeid(StackOverflowException), nullptr},
    {u"vx::io::UnexpectedEOFException", &typeid(io::UnexpectedEOFException), create<io::UnexpectedEOFException>},
    {u"vx::text::charset::UnknownEncodingException", &typeid(text::charset::UnknownEncodingException),
        create<text::charset::UnknownEncodingException>},
    {u"vx::text::charset::UnmappableCharacterException", &typeid(text::charset::UnmappableCharacterException),
        create<text::charset::UnmappableCharacterException>},
    {u"vx::UnsupportedOperationException", &typeid(UnsupportedOperationException),
        create<UnsupportedOperationException>},
    {u"vx::UserAbortException", &typeid(UserAbortException), nullptr},
};

} // namespace

void registerClasses(ClassManagerBase& manager)
{
    for (const ClassRow& row : CLASSES)
        manager.registerClass(row.name, row.type, row.creator);
}

} // namespace vx::detail
