#include "vx/startup/detail/ClassTable.h"

#include "vx/ClassManagerBase.h"
#include "vx/Exceptions.h"
#include "vx/NumberBoxes.h"
#include "vx/String.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/collections/vorb/Collection.h"
#include "vx/collections/vorb/ConstIterator.h"
#include "vx/collections/vorb/ConstListIterator.h"
#include "vx/collections/vorb/HashMap.h"
#include "vx/collections/vorb/Iterator.h"
#include "vx/collections/vorb/LinkedList.h"
#include "vx/collections/vorb/List.h"
#include "vx/collections/vorb/ListIterator.h"
#include "vx/collections/vorb/Map.h"
#include "vx/collections/vorb/Set.h"
#include "vx/exec/IRunnable.h"
#include "vx/exec/Thread.h"
#include "vx/i18n/StringMapBundle.h"
#include "vx/io/AlphaNumInputStream.h"
#include "vx/io/AlphaNumOutputStream.h"
#include "vx/io/BitInputStream.h"
#include "vx/io/BitOutputStream.h"
#include "vx/io/BufferedInputStream.h"
#include "vx/io/BufferedOutputStream.h"
#include "vx/io/BufferedReader.h"
#include "vx/io/BufferedWriter.h"
#include "vx/io/ByteArrayInputStream.h"
#include "vx/io/ByteArrayOutputStream.h"
#include "vx/io/DataInputStream.h"
#include "vx/io/DataOutputStream.h"
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
#include "vx/io/StdioInputStream.h"
#include "vx/io/StdioOutputStream.h"
#include "vx/io/StringWriter.h"
#include "vx/io/Writer.h"
#include "vx/math/BigDecimal.h"
#include "vx/net/TcpServerSocket.h"
#include "vx/net/TcpSocket.h"
#include "vx/sync/Atomic.h"
#include "vx/sync/Event.h"
#include "vx/sync/FakeMutex.h"
#include "vx/sync/Gate.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ReaderWriterLock.h"
#include "vx/sync/Semaphore.h"
#include "vx/text/charset/BTCAMP7.h"
#include "vx/text/charset/BTCSingleByte.h"
#include "vx/text/charset/BTCUTF16.h"
#include "vx/text/charset/BTCUTF32.h"
#include "vx/text/charset/BTCUTF8.h"
#include "vx/text/charset/CTBAMP7.h"
#include "vx/text/charset/CTBSingleByte.h"
#include "vx/text/charset/CTBUTF16.h"
#include "vx/text/charset/CTBUTF32.h"
#include "vx/text/charset/CTBUTF8.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/util/Comparator.h"
#include "vx/util/FilePath.h"
#include "vx/util/Guid.h"
#include "vx/util/MTByteBuffer.h"
#include "vx/util/MTCharBuffer.h"
#include "vx/util/ROByteBuffer.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RWByteBuffer.h"
#include "vx/util/RWCharBuffer.h"
#include "vx/vorb/ClassFactory.h"
#include "vx/vorb/Module.h"

#include <typeinfo>

namespace vx::startup::detail {

namespace {

struct ClassRow {
    const char16_t* name;
    const std::type_info* type;
    ObjectCreator creator; ///< null: registered by name, not creatable
};

template <class T, auto... arguments>
Object* create()
{
    return new T(arguments...);
}

// The first row of a name is used, so a later one without a creator has no effect.
const ClassRow CLASSES[] = {
    {u"CVXAbstractByteBuffer", &typeid(util::AbstractByteBuffer), nullptr},
    {u"CVXAbstractCharBuffer", &typeid(util::AbstractCharBuffer), nullptr},
    {u"CVXAlphaNumInputStream", &typeid(io::AlphaNumInputStream), nullptr},
    {u"CVXAlphaNumOutputStream", &typeid(io::AlphaNumOutputStream), nullptr},
    {u"CVXArrayList", &typeid(collections::vorb::ArrayList), create<collections::vorb::ArrayList>},
    {u"CVXAtomic", &typeid(sync::Atomic), nullptr},
    {u"CVXBigDecimal", &typeid(math::BigDecimal), create<math::BigDecimal>},
    {u"CVXBigInteger", &typeid(math::BigInteger), create<math::BigInteger>},
    {u"CVXBitInputStream", &typeid(io::BitInputStream), nullptr},
    {u"CVXBitOutputStream", &typeid(io::BitOutputStream), nullptr},
    {u"CVXBTCSingleByte", &typeid(text::charset::BTCSingleByte), nullptr},
    {u"CVXBTCSingleByteTable", &typeid(text::charset::BTCSingleByteTable), nullptr},
    {u"CVXByteToCharConverter", &typeid(text::charset::ByteToCharConverter), nullptr},
    {u"CVXCharToByteConverter", &typeid(text::charset::CharToByteConverter), nullptr},
    {u"vx::Class", &typeid(Class), nullptr},
    {u"CVXBufferedInputStream", &typeid(io::BufferedInputStream), nullptr},
    {u"CVXBufferedOutputStream", &typeid(io::BufferedOutputStream), nullptr},
    {u"CVXBufferedReader", &typeid(io::BufferedReader), nullptr},
    {u"CVXBufferedWriter", &typeid(io::BufferedWriter), nullptr},
    {u"CVXByteArrayInputStream", &typeid(io::ByteArrayInputStream), nullptr},
    {u"CVXByteArrayOutputStream", &typeid(io::ByteArrayOutputStream), create<io::ByteArrayOutputStream, 256>},
    {u"CVXCTBSingleByte", &typeid(text::charset::CTBSingleByte), nullptr},
    {u"CVXCTBSingleByteTable", &typeid(text::charset::CTBSingleByteTable), nullptr},
    {u"CVXCollection", &typeid(collections::vorb::Collection), nullptr},
    {u"vx::vorb::ClassFactory", &typeid(vorb::ClassFactory), nullptr},
    {u"CVXComDllModule", &typeid(vorb::DllModule), nullptr},
    {u"CVXComObject", &typeid(ComObject), nullptr},
    {u"CVXComparator", &typeid(util::Comparator), nullptr},
    {u"CVXConstIterator", &typeid(collections::vorb::ConstIterator), nullptr},
    {u"CVXConstListIterator", &typeid(collections::vorb::ConstListIterator), nullptr},
    {u"CVXDataInputStream", &typeid(io::DataInputStream), nullptr},
    {u"CVXDataOutputStream", &typeid(io::DataOutputStream), nullptr},
    {u"CVXDouble", &typeid(Double), nullptr},
    {u"CVXEvent", &typeid(sync::Event), create<sync::Event>},
    {u"vx::sync::FakeAtomic", &typeid(sync::FakeAtomic), nullptr},
    {u"CVXFakeMutex", &typeid(sync::FakeMutex), create<sync::FakeMutex>},
    {u"CVXFilePath", &typeid(util::FilePath), nullptr},
    {u"CVXFilterInputStream", &typeid(io::FilterInputStream), nullptr},
    {u"CVXFilterOutputStream", &typeid(io::FilterOutputStream), nullptr},
    {u"CVXFilterReader", &typeid(io::FilterReader), nullptr},
    {u"CVXFilterWriter", &typeid(io::FilterWriter), nullptr},
    {u"CVXFloat", &typeid(Float), nullptr},
    {u"CVXGate", &typeid(sync::Gate), create<sync::Gate>},
    {u"CVXGuid", &typeid(util::Guid), nullptr},
    {u"CVXHashMap", &typeid(collections::vorb::HashMap), create<collections::vorb::HashMap>},
    {u"CVXInputStream", &typeid(io::InputStream), nullptr},
    {u"CVXInputStreamReader", &typeid(io::InputStreamReader), nullptr},
    {u"CVXInteger16", &typeid(Integer16), nullptr},
    {u"CVXInteger32", &typeid(Integer32), nullptr},
    {u"CVXInteger64", &typeid(Integer64), nullptr},
    {u"CVXInteger8", &typeid(Integer8), nullptr},
    {u"CVXIterator", &typeid(collections::vorb::Iterator), nullptr},
    {u"CVXLinkedList", &typeid(collections::vorb::LinkedList), create<collections::vorb::LinkedList>},
    {u"CVXList", &typeid(collections::vorb::List), nullptr},
    {u"CVXListIterator", &typeid(collections::vorb::ListIterator), nullptr},
    {u"CVXLocale", &typeid(i18n::Locale), nullptr},
    {u"CVXLockObject", &typeid(sync::LockObject), nullptr},
    {u"CVXMap", &typeid(collections::vorb::Map), nullptr},
    {u"CVXMTByteBuffer", &typeid(util::MTByteBuffer), create<util::MTByteBuffer>},
    {u"CVXMTCharBuffer", &typeid(util::MTCharBuffer), create<util::MTCharBuffer>},
    {u"CVXMutex", &typeid(sync::Mutex), create<sync::Mutex>},
    {u"CVXNullOutputStream", &typeid(io::NullOutputStream), create<io::NullOutputStream>},
    {u"CVXNullWriter", &typeid(io::NullWriter), create<io::NullWriter>},
    {u"CVXNumber", &typeid(Number), nullptr},
    {u"CVXObject", &typeid(Object), create<Object>},
    {u"CVXOutputStream", &typeid(io::OutputStream), nullptr},
    {u"CVXOutputStreamWriter", &typeid(io::OutputStreamWriter), nullptr},
    {u"CVXPrintWriter", &typeid(io::PrintWriter), nullptr},
    {u"CVXReader", &typeid(io::Reader), nullptr},
    {u"CVXResourceBundle", &typeid(i18n::StringBundle), nullptr},
    {u"CVXROByteBuffer", &typeid(util::ROByteBuffer), create<util::ROByteBuffer>},
    {u"CVXROCharBuffer", &typeid(util::ROCharBuffer), create<util::ROCharBuffer>},
    {u"CVXRunnable", &typeid(exec::IRunnable), nullptr},
    {u"CVXRWByteBuffer", &typeid(util::RWByteBuffer), create<util::RWByteBuffer>},
    {u"CVXRWCharBuffer", &typeid(util::RWCharBuffer), create<util::RWCharBuffer>},
    {u"CVXRWLock", &typeid(sync::ReaderWriterLock), create<sync::ReaderWriterLock>},
    {u"CVXSemaphore", &typeid(sync::Semaphore), create<sync::Semaphore, 0U>},
    {u"CVXSet", &typeid(collections::vorb::Set), nullptr},
    {u"CVXSignedInteger", &typeid(SignedInteger), nullptr},
    {u"CVXStdioInputStream", &typeid(io::StdioInputStream), create<io::StdioInputStream>},
    {u"CVXStdioOutputStream", &typeid(io::StdioOutputStream), create<io::StdioOutputStream>},
    {u"CVXString", &typeid(String), create<String>},
    {u"vx::i18n::StringMapBundle", &typeid(i18n::StringMapBundle), nullptr},
    {u"CVXStringWriter", &typeid(io::StringWriter), create<io::StringWriter, 0>},
    {u"CVXSyncObject", &typeid(sync::Object), nullptr},
    {u"vx::net::TcpServerSocket", &typeid(net::TcpServerSocket), nullptr},
    {u"vx::net::TcpSocket", &typeid(net::TcpSocket), nullptr},
    {u"CVXThread", &typeid(exec::Thread), nullptr},
    {u"CVXUInteger16", &typeid(UInteger16), nullptr},
    {u"CVXUInteger32", &typeid(UInteger32), nullptr},
    {u"CVXUInteger64", &typeid(UInteger64), nullptr},
    {u"CVXUInteger8", &typeid(UInteger8), nullptr},
    {u"CVXUnsignedInteger", &typeid(UnsignedInteger), nullptr},
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
    {u"vx::text::charset::CTBASCII", &typeid(text::charset::CTBASCII), create<text::charset::CTBASCII>},
    {u"vx::text::charset::BTCASCII", &typeid(text::charset::BTCASCII), create<text::charset::BTCASCII>},
    {u"vx::text::charset::CTBISO8859_1", &typeid(text::charset::CTBISO8859_1), create<text::charset::CTBISO8859_1>},
    {u"vx::text::charset::BTCISO8859_1", &typeid(text::charset::BTCISO8859_1), create<text::charset::BTCISO8859_1>},
    {u"vx::text::charset::CTBCP437", &typeid(text::charset::CTBCP437), create<text::charset::CTBCP437>},
    {u"vx::text::charset::BTCCP437", &typeid(text::charset::BTCCP437), create<text::charset::BTCCP437>},
    {u"vx::text::charset::CTBCP1252", &typeid(text::charset::CTBCP1252), create<text::charset::CTBCP1252>},
    {u"vx::text::charset::BTCCP1252", &typeid(text::charset::BTCCP1252), create<text::charset::BTCCP1252>},
    {u"vx::text::charset::CTBUTF8", &typeid(text::charset::CTBUTF8), create<text::charset::CTBUTF8>},
    {u"vx::text::charset::BTCUTF8", &typeid(text::charset::BTCUTF8), create<text::charset::BTCUTF8>},
    {u"vx::text::charset::CTBUTF16LE", &typeid(text::charset::CTBUTF16LE), create<text::charset::CTBUTF16LE>},
    {u"vx::text::charset::BTCUTF16LE", &typeid(text::charset::BTCUTF16LE), create<text::charset::BTCUTF16LE>},
    {u"vx::text::charset::CTBUTF16BE", &typeid(text::charset::CTBUTF16BE), create<text::charset::CTBUTF16BE>},
    {u"vx::text::charset::BTCUTF16BE", &typeid(text::charset::BTCUTF16BE), create<text::charset::BTCUTF16BE>},
    {u"vx::text::charset::CTBUTF32LE", &typeid(text::charset::CTBUTF32LE), create<text::charset::CTBUTF32LE>},
    {u"vx::text::charset::BTCUTF32LE", &typeid(text::charset::BTCUTF32LE), create<text::charset::BTCUTF32LE>},
    {u"vx::text::charset::CTBUTF32BE", &typeid(text::charset::CTBUTF32BE), create<text::charset::CTBUTF32BE>},
    {u"vx::text::charset::BTCUTF32BE", &typeid(text::charset::BTCUTF32BE), create<text::charset::BTCUTF32BE>},
    {u"vx::text::charset::BTCAMP7", &typeid(text::charset::BTCAMP7), create<text::charset::BTCAMP7>},
    {u"vx::text::charset::CTBAMP7", &typeid(text::charset::CTBAMP7), create<text::charset::CTBAMP7>},
};

} // namespace

void registerClasses(ClassManagerBase& manager)
{
    for (const ClassRow& row : CLASSES)
        manager.registerClass(row.name, row.type, row.creator);
}

} // namespace vx::startup::detail
