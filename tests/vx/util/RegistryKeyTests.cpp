#include "tests/vx/Common.h"
#include "tests/vxsys/Scratch.h"
#include "vx/util/RegKeyIterator.h"
#include "vx/util/RegistryKey.h"

using namespace vx;
using namespace vx::util;

namespace {

HKEY__* root(std::uintptr_t number)
{
    return reinterpret_cast<HKEY__*>(number);
}

class RegistryKeys : public testing::Test {
protected:
    Scratch m_scratch;
    ScopedVariable m_store {"VXSYS4_REGISTRY", (m_scratch / "store").c_str()};
    RegistryKey m_key {u"VX_HKEY_USER\\Software\\X"};
};

TEST(RegistryKey, ReadsAndPrintsPathsAndTakesTheSystemsNumbersOfTheRoots)
{
    const std::tuple<const char16_t*, std::uint32_t, std::uint32_t, const char*> cases[] = {
        // The hive, the system's root, the full path, the path below the root and the name
        {u"VX_HKEY_CONFIG/Software/X", 1, 0x80000002, "VX_HKEY_CONFIG_32\\Software\\X|\\Software\\X|X"},
        {u"VX_HKEY_USER\\", 2, 0x80000001, "VX_HKEY_USER||"},
        {u"VX_HKEY_CLASSES_CROSS\\a", 3, 0x80000000, "VX_HKEY_CLASSES_64\\a|\\a|a"},
        {u"VX_HKEY_CONFIG_64\\a\\b", 4, 0x80000002, "VX_HKEY_CONFIG_64\\a\\b|\\a\\b|b"},
        {u"VX_HKEY_CONFIG_CROSS", 4, 0x80000002, "VX_HKEY_CONFIG_64||VX_HKEY_CONFIG_CROSS"},
    };
    for (const auto& [path, hive, number, texts] : cases) {
        const RegistryKey key(path);
        EXPECT_EQ(key.getVXHKEY(), hive) << texts;
        EXPECT_EQ(key.getHKEY(), root(number)) << texts;
        EXPECT_EQ((key.getKey() + u"|" + key.getKey(true) + u"|" + key.getKeyName()).toUtf8(), texts);
    }
    for (const char16_t* unknown : {u"VX_HKEY_USERS\\a", u"", u"\\VX_HKEY_USER", u"VX_HKEY_USER_32"})
        EXPECT_EQ(saidBy<Exception>([&] { RegistryKey key((String(unknown))); }), "Unknown VX_HKEY") << String(unknown);
    EXPECT_EQ(RegistryKey(root(0x80000001), u"a/b").getKey(), u"VX_HKEY_USER\\a\\b");
    const RegistryKey other(root(0x80000003), u"a");
    EXPECT_EQ(other.getVXHKEY(), 0x80000003U);
    EXPECT_EQ(other.getHKEY(), root(UINTPTR_MAX));
    String path(u"VX_HKEY_CONFIG_64\\a\\b");
    EXPECT_EQ(RegistryKey::extractHkey(path), root(0x80000002));
    EXPECT_EQ(path, u"a\\b");
}

TEST(RegistryKey, ComparesByHiveAndPathWithoutCase)
{
    const RegistryKey key(VX_HKEY_USER, u"Software\\X");
    EXPECT_EQ(key.getParent().getKey(), u"VX_HKEY_USER\\Software");
    EXPECT_EQ(saidBy<Exception>([&] { key.getParent().getParent(); }), "No parent key");
    EXPECT_TRUE(key.equals(RegistryKey(u"VX_HKEY_USER/SOFTWARE/x")));
    EXPECT_LT(key.compareTo(RegistryKey(VX_HKEY_USER, u"software\\Y")), 0);
    EXPECT_GT(key.compareTo(RegistryKey(VX_HKEY_CONFIG_32, u"software\\Y")), 0);
    EXPECT_EQ(key.hashCode(), String(u"Software\\X").hashCode());
    EXPECT_THROW(key.compareTo(String(u"Software\\X")), CastFailedException);
}

TEST_F(RegistryKeys, GivesBackWhatWasSet)
{
    m_key.setValue(u"text", u"a\x3042");
    m_key.setValue(u"number", 0xFFFFFFFFU);
    m_key.setValue(u"big", 0xFFFFFFFFFFFFFFFFULL);
    const signed char bytes[] = {1, -1, 0};
    m_key.setValue(u"bytes", bytes, 3);
    m_key.setValue(u"default");
    EXPECT_EQ(m_key.getValueString(u"TEXT"), u"a\x3042");
    EXPECT_EQ(m_key.getValueString(u""), u"default");
    EXPECT_EQ(m_key.getValueUINT32(u"number"), UINT32_MAX);
    EXPECT_EQ(m_key.getValueUINT64(u"big"), UINT64_MAX);
    EXPECT_EQ(m_key.getValueType(u"big"), VX_REG_UINT64);
    signed char read[4] = {};
    EXPECT_EQ(m_key.getValue(u"bytes", read, 4), 3);
    EXPECT_TRUE(std::equal(bytes, bytes + 3, read));
    for (const int length : {511, 512, 5000}) { // changed between two calls of the platform layer
        const String text(u'x', length);
        m_key.setValue(u"text", text);
        EXPECT_EQ(m_key.getValueString(u"text"), text);
    }
    // Bytes that another program has stored as a text.
    VXRegistrySetValue(VX_HKEY_USER, u"Software\\X", u"raw", VX_REG_STRING, u"a\0\0", 6);
    EXPECT_EQ(m_key.getValueString(u"raw"), std::u16string_view(u"a\0", 2));
}

TEST_F(RegistryKeys, TellsWhatFails)
{
    m_key.setValue(u"n", 5U);
    m_key.setValue(u"long", u"more than four bytes");
    signed char bytes[2] = {};
    const String zero(u"n\0x", 3);
    EXPECT_EQ(saidBy<Exception>([&] { m_key.getValueString(u"n"); }), "Registry type mismatch");
    EXPECT_EQ(saidBy<Exception>([&] { m_key.getValueUINT64(u"n"); }), "Registry type mismatch");
    const std::pair<std::function<void()>, std::int32_t> cases[] = {
        {[&] { m_key.getValueUINT32(u"long"); }, RESULT_BUFFER_TOO_SMALL},
        {[&] { m_key.getValueString(u"none"); }, RESULT_NOT_FOUND},
        {[&] { m_key.deleteValue(u"none"); }, RESULT_NOT_FOUND},
        {[&] { m_key.getSubkey(zero).setValue(1); }, RESULT_INVALID_NAME},
        {[&] { RegistryKey(root(0x80000003), u"a").setValue(1); }, RESULT_INVALID_ARGUMENT},
        {[&] { m_key.getSubkey(u"a").getValueIterator(); }, RESULT_NOT_FOUND},
    };
    for (const auto& [work, result] : cases)
        EXPECT_EQ(resultOf(work), result) << &result - &cases->second;
    EXPECT_EQ(m_key.getValue(u"n", bytes, 2), 4) << "only the length tells";
    EXPECT_EQ(m_key.getValue(u"none", bytes, 2), 0);
    EXPECT_EQ(m_key.getValue(zero, bytes, 2), 0);
    EXPECT_TRUE(m_key.valueExists(u"N"));
    EXPECT_FALSE(m_key.valueExists(zero) || m_key.getSubkey(u"a").valueExists(u"n"));
}

TEST_F(RegistryKeys, WalksOverSubkeysAndValues)
{
    m_key.setValue(u"b", String(u'x', 1000));
    m_key.setValue(u"A", 1);
    m_key.getSubkey(u"Two").setValue(2);
    m_key.getSubkey(u"one").setValue(1);
    const auto values = m_key.getValueIterator();
    EXPECT_EQ(*values->next(), String(u"A")) << "without being asked for more";
    EXPECT_EQ(*values->next(), String(u"A")) << "it stands";
    EXPECT_TRUE(values->hasNext());
    EXPECT_EQ(*values->next(), String(u"b")) << "a value beyond the room for data is no end";
    EXPECT_FALSE(values->hasNext());
    EXPECT_EQ(saidBy<Exception>([&] { values->next(); }), "no more values");
    std::string keys;
    for (const auto walk = m_key.getSubkeyIterator(); walk->hasNext();) {
        const Reference<RegistryKey> key = walk->next();
        keys += key->getKey().toUtf8() + '=' + std::to_string(key->getValueUINT32(u"")) + ' ';
    }
    EXPECT_EQ(keys, "VX_HKEY_USER\\Software\\X\\one=1 VX_HKEY_USER\\Software\\X\\Two=2 ");
    const Reference<RegistryKey> software = RegistryKey(u"VX_HKEY_USER").getSubkeyIterator()->next();
    EXPECT_EQ(software->getKey(true), u"\\\\Software") << "also with a backslash after an empty path";
    software->remove();
    EXPECT_FALSE(m_key.valueExists(u"A"));
}

} // namespace
