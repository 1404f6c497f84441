#include "tests/vx/Common.h"
#include "tests/vx/UserBuffer.h"
#include "tests/vxsys/Scratch.h"
#include "vx/NumberBoxes.h"
#include "vx/TerminatedText.h"
#include "vx/io/FileInputStream.h"
#include "vx/io/FileOutputStream.h"
#include "vx/io/PrintWriter.h"
#include "vx/util/FilePath.h"
#include "vx/util/PropertySet.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RWCharBuffer.h"
#include "vx/util/RegKeyIterator.h"
#include "vx/util/RegistryKey.h"
#include "vx/util/vorb/VorbPropertySet.h"

namespace vx {
namespace {

template <class Writer>
concept PrintsUtf8 = requires(Writer& writer)
{
    writer.print(std::string()), writer.print(std::u8string()), writer.println(std::string_view()),
        writer.println(u8"");
};
static_assert(PrintsUtf8<io::PrintWriter>);
static_assert(std::is_constructible_v<io::FileInputStream, std::string>, "a path of the standard library's own");

/// The text without its last `rest` units. No zero unit follows it.
String partOf(const String& whole, int rest = 1)
{
    return String(String::AcquireWrap, whole, 0, whole.getLength() - rest);
}

TEST(TerminatedText, CopiesOnlyWhereNoZeroUnitIsKnownToEndTheText)
{
    const String whole(u"abcdef");
    const auto exact = std::make_unique<char16_t[]>(3); // the unit after it must not be read
    std::u16string(u"abc").copy(exact.get(), 3);
    const Reference<util::ROCharBuffer> foreign(new util::ROCharBuffer(exact.get(), 3));
    const struct {
        const char* what;
        String text;
        bool isCopied;
    } rows[] = {
        {"own", String(u"abc"), false},
        {"shared", String(String(u"abc")), false},
        {"part", partOf(whole, 3), true},
        {"wrapped storage", String(String::AcquireWrap, foreign.get()), true},
        {"adopted", String(String::AcquireShare, new UserBuffer(u"abc")), true},
        {"adopted without a terminator", String(String::AcquireShare, new util::RWCharBuffer(u"abcd", 4)), true},
    };
    for (const auto& row : rows) {
        const TerminatedText text(row.text);
        EXPECT_EQ(std::u16string(text), u"abc") << row.what;
        EXPECT_EQ(text.get() != row.text.getData(), row.isCopied) << row.what;
    }
    EXPECT_EQ(*TerminatedText(String()).get(), 0);
    const TerminatedText outlives(String(u"a text of a string that is gone"));
    EXPECT_EQ(std::u16string(outlives), u"a text of a string that is gone");

    const String name(String::AcquireWrap, foreign.get());
    EXPECT_EQ(std::u16string(SystemName(name)), u"abc");
    const String cut(u"a\0b", 3);
    EXPECT_EQ(resultOf([&] { SystemName {cut}; }), RESULT_INVALID_NAME);
    EXPECT_EQ(resultOf([&] { SystemName(String(cut), RESULT_FAIL); }), RESULT_FAIL);

    // The parsers of numbers find the end by themselves.
    std::u16string(u"12 ").copy(exact.get(), 3);
    exact[2] = u'3';
    EXPECT_EQ(Number::parseInt(name), 123);
    EXPECT_EQ(Number::parseUInt(name, 16), 0x123U);
    EXPECT_EQ(Number::parseDouble(name), 123.0);
    EXPECT_EQ(Integer64(name), 123);
    EXPECT_EQ(Float(partOf(u"1.25", 1)), 1.2F);
}

/// Each room that finds something by name: a part of a text names exactly its units.
TEST(TerminatedText, NamesWhatAPartHoldsInEveryRoom)
{
    Scratch scratch;
    const ScopedVariable store("VXSYS4_REGISTRY", (scratch / "store").c_str());
    const String path(scratch.full("file2"));
    const auto writeTo = [](const String& name, const char* content) {
        const Reference<io::FileOutputStream> file(new io::FileOutputStream(name, io::FileOutputStream::TRUNC));
        file->write(reinterpret_cast<const signed char*>(content), 1);
    };
    const auto readFrom = [](const String& name) {
        const Reference<io::FileInputStream> file(new io::FileInputStream(name));
        signed char byte = 0;
        file->read(&byte, 1);
        return String(static_cast<char16_t>(byte));
    };
    writeTo(path, "2");
    writeTo(partOf(path), "1");
    const String keyPath(u"VX_HKEY_USER\\Software\\X2");
    const String name2(u"name2"), name(u"name"), two(u"2"), one(u"1");
    for (const String& key : {keyPath, partOf(keyPath)}) {
        util::RegistryKey(key).setValue(name2, two);
        util::RegistryKey(key).setValue(partOf(name2), one);
    }
    const util::RegistryKey key(keyPath);
    util::RegistryKey(partOf(keyPath)).remove();
    const Reference<util::PropertySet> set(new util::PropertySet);
    const Reference<util::vorb::VorbPropertySet> foreign(new util::vorb::VorbPropertySet(set.get(), nullptr));
    foreign->set(name2, two);
    foreign->set(partOf(name2), one);

    const std::pair<const char*, std::function<String()>> rows[] = {
        {"write a file", [&] { return readFrom(String(scratch.full("file"))); }},
        {"read a file", [&] { return readFrom(partOf(path)); }},
        {"full path", [&] { return readFrom(util::FilePath(partOf(path)).getCanonicalPath()); }},
        {"set a value", [&] { return key.getValueString(name); }},
        {"get a value", [&] { return key.getValueString(partOf(name2)); }},
        {"set a property", [&] { return set->get(name); }},
        {"get a property", [&] { return foreign->get(partOf(name2)); }},
    };
    for (const auto& [what, found] : rows)
        EXPECT_EQ(found(), one) << what;
    EXPECT_EQ(readFrom(path), two);
    EXPECT_EQ(key.getValueString(name2), two) << "a key whose name begins like another's stays";
    EXPECT_TRUE(key.valueExists(partOf(name2)) && !key.valueExists(partOf(name2, 2)));
    EXPECT_EQ(foreign->remove(partOf(name2)), one);
    EXPECT_TRUE(foreign->hasProperty(name2) && !foreign->hasProperty(name));
}

} // namespace
} // namespace vx
