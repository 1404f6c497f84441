// What the test of gdb's printers looks at.
#include <vx/vxlib4.h>

#include <stdexcept>

using namespace vx;

namespace {

[[gnu::noinline]] void stop()
{
    asm volatile(""); // the call is not optimised away
}

void look()
{
    const String empty;
    const String text(u"Gr\u00FC\u00DFe \U0001F600 \"quoted\"");
    const String half(u"half \xD83D");
    const String longText(u'x', 1000);
    const String outside(u"outside text");
    const String wrapped(String::AcquireWrap, outside, 0, 7);
    const Str1 str1(u"one text");
    const Str1 part(str1, 4);
    Str1Fixed<16> fixed;
    fixed = Str1(u"fixed");

    const Reference<String> none;
    const Reference<String> some(new String(u"shared"));
    const Reference<Object> asObject(new Integer32(-5));

    const Reference<collections::vorb::ArrayList> array(new collections::vorb::ArrayList);
    const Reference<collections::vorb::LinkedList> linked(new collections::vorb::LinkedList);
    const Reference<collections::vorb::HashMap> map(new collections::vorb::HashMap);
    const Reference<collections::vorb::HashSet> set(new collections::vorb::HashSet);
    collections::StringHashMap byText;
    collections::IntegerHashMap byNumber;
    Str1HashMap<int> counts;
    collections::List<String> typed(array.get());
    collections::List<String> typedLinked(linked.get());
    collections::Map<String, Integer32> typedMap(map.get());
    collections::Set<String> typedSet(set.get());
    for (int number = 1; number <= 3; ++number) {
        Reference<String> word(new String(String(u"word ") + String::valueOf(number)));
        typed.add(word.get());
        typedLinked.add(word.get());
        typedSet.add(word.get());
        typedMap.put(word.get(), Reference<Integer32>(new Integer32(number)).get());
        byText.put(*word, word.get());
        byNumber.put(number - 2, word.get());
        counts.put(Str1(word->getData()), number);
    }
    typed.add(nullptr);

    const math::BigInteger zero;
    const math::BigInteger big(String(u"-123456789012345678901234567890123456789"), 10);
    math::BigInteger huge(-10);
    huge.pow(math::BigInteger(5001));
    const math::BigDecimal tiny(math::BigInteger(7), 2'000'000'000);
    const math::BigDecimal price(String(u"-0.05"));
    const UInteger8 byte(200);
    const Double real(2.5);
    const util::Guid guid(_GUID {0x85B221C7, 0x0ED6, 0x4AFA, {0xA7, 0xB7, 0x2E, 0xFC, 0xBE, 0x5B, 0x9C, 0xD7}});
    const ResultException failure(static_cast<std::int32_t>(0x80070002), u"open it");
    const RangeErrorException plain(u"too far");
    sync::Mutex accounts("accounts");
    const sync::ScopedLock hold(accounts);
    const sync::Gate gate;
    const sync::Semaphore units(2, "units");
    stop();
}

} // namespace

int main()
{
    look();
}
