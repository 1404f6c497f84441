#include "Recording.h"
#include "tests/Slots.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "vx/NumberBoxes.h"
#include "vx/collections/List.h"
#include "vx/collections/Set.h"
#include "vx/collections/vorb/ArrayList.h"
#include "vx/exec/Thread.h"
#include "vx/i18n/StringMapBundle.h"
#include "vx/log/AbstractLogWriter.h"
#include "vx/log/LogEntry.h"
#include "vx/log/Logger.h"
#include "vx/log/StringBundleLogger.h"
#include "vx/log/SyncLogger.h"
#include "vx/log/TimeStamp.h"
#include "vx/log/detail/Placeholders.h"
#include "vx/log/vorb/IFieldIterator.h"
#include "vx/log/vorb/VorbProcessor.h"

#include <set>
#include <thread>
#include <typeinfo>

namespace vx::log {
namespace {

using Names = std::set<std::string>;

Names namesOf(const ILogEntry& entry)
{
    Names names;
    const auto set = entry.getFieldNames();
    for (const Reference<String>& name : *set)
        names.insert(name->toUtf8());
    return names;
}

/// All fields as "name=text ", but for those that differ in each run.
std::string shown(const ILogEntry& entry)
{
    std::string text;
    for (const std::string& name : namesOf(entry)) {
        const bool isOpen = name == "thread" || name == "timestamp";
        text += name + '=' + (isOpen ? "" : fieldOf(entry, String(name).getData())) + ' ';
    }
    return text;
}

/// Makes protected operations public.
struct OpenLogger : Logger {
    using Logger::addCustomFields;
};
struct OpenWriter : AbstractLogWriter {
    using AbstractLogWriter::format;
};

TEST(LogClasses, KeepTheOrderOfVirtualOperations)
{
    const std::size_t first = slotOf(&Object::toString) + 1;
    expectSlots("Logger", first, {&Logger::enableField, &OpenLogger::addCustomFields});
    expectSlots("writer", first, {&AbstractLogWriter::flush, &OpenWriter::format});
    expectSlots("time", first, {slotOf<String (TimeStamp::*)(bool) const>(&TimeStamp::toString), &TimeStamp::toLog});
    expectSlots(
        "entry", 3, {&ILogEntry::setField, &ILogEntry::getField, &ILogEntry::hasField, &ILogEntry::getFieldNames});
    expectSlots("component", 3,
        {&vorb::ILogEntry::SetField, &vorb::ILogEntry::GetField, &vorb::ILogEntry::HasField,
            &vorb::ILogEntry::GetFieldIterator});
    using Bundle = StringBundleLogger;
    expectSlots("StringBundleLogger", 11,
        {slotOf<void (Bundle::*)(int, const String&, const collections::List<Object>&)>(&Bundle::log),
            slotOf<void (Bundle::*)(int, const String&)>(&Bundle::log)});
}

TEST(Logger, PutsIntoEachEntryTheFieldsThatAreOn)
{
    Reference<RecordingProcessor> target(new RecordingProcessor);
    const Reference<Logger> plain = Logger::create();
    plain->log(u"swallowed");
    plain->addProcessor(target.get());
    plain->log(u"plain");
    const Reference<Logger> named = Logger::create(u"service");
    named->addProcessor(target.get());
    named->log(-7, u"named");
    named->setDefaultLevel(3);
    for (const char16_t* field : {u"SEQUENCE", u"Thread", u"timestamp", u"no such field"})
        named->enableField(field, true);
    named->enableField(u"name", false);
    named->log(u"all");

    ASSERT_EQ(target->entries().size(), 3U);
    EXPECT_EQ(shown(*target->entries()[0]), "level=0 text=plain ");
    EXPECT_EQ(shown(*target->entries()[1]), "level=-7 name=service text=named ");
    const ILogEntry& all = *target->entries()[2]; // the entry before it carried the sequence 0, unseen
    EXPECT_EQ(shown(all), "level=3 sequence=1 text=all thread= timestamp= ");
    EXPECT_EQ(fieldOf(all, u"thread"), std::to_string(exec::Thread::getCurrentID()));
    const std::pair<const char16_t*, const std::type_info&> types[]
        = {{u"level", typeid(Integer32)}, {u"text", typeid(String)}, {u"sequence", typeid(Integer32)},
            {u"thread", typeid(UInteger32)}, {u"timestamp", typeid(TimeStamp)}};
    for (const auto& [name, type] : types) {
        Reference<const Object> values[2];
        inThreads(2, [&, field = name](int thread) { values[thread] = all.getField(field); });
        EXPECT_EQ(values[0], values[1]) << String(name);
        const Object& object = *values[0];
        EXPECT_TRUE(typeid(object) == type) << String(name);
    }
}

TEST(Logger, CountsWhatItLogsOnlyAndStaysWholeWhenAProcessorThrows)
{
    Reference<RecordingProcessor> targets[]
        = {new RecordingProcessor, new RecordingProcessor(2), new RecordingProcessor};
    const Reference<Logger> logger = Logger::create();
    logger->enableField(u"sequence", true);
    logger->addProcessor(new RecordingProcessor(0));
    logger->setProcessor(targets[0].get());
    logger->addProcessor(targets[1].get());
    logger->addProcessor(targets[2].get());
    const Reference<SyncLogger> sync(new SyncLogger(logger.get()));

    logger->log(u"a");
    logger->setEnabled(false);
    logger->log(u"never");
    logger->setEnabled(true);
    logger->log(u"b");
    EXPECT_THROW(logger->log(u"c"), RangeErrorException);
    for (const char16_t* text : {u"d", u"e"}) // the locks came back
        inThreads(1, [&](int) { EXPECT_THROW(sync->log(1, text), RangeErrorException); });
    EXPECT_EQ(targets[0]->texts() + "|" + targets[1]->texts() + "|" + targets[2]->texts(), "a; b; c; d; e|a; b|a; b");
    EXPECT_EQ(fieldOf(*targets[0]->entries()[3], u"sequence"), "3");
}

TEST(Logger, MayBeSwitchedWhileOtherThreadsLog)
{
    constexpr int EACH = 500;
    Reference<RecordingProcessor> target(new RecordingProcessor);
    const Reference<Logger> logger = Logger::create();
    logger->addProcessor(target.get());
    inThreads(3, [&](int thread) {
        for (int count = 0; count < EACH; ++count) {
            if (thread < 2)
                logger->log(u"x");
            else
                logger->setDefaultLevel(count), logger->setEnabled(count % 2 == 1);
        }
    });
    for (const Reference<const ILogEntry>& entry : target->entries())
        ASSERT_LT(std::stoi(fieldOf(*entry, u"level")), EACH);
}

TEST(MultiProcessor, PassesAnEntryToAProcessorThatIsAddedMeanwhile)
{
    struct Adding : RecordingProcessor {
        void process(const ILogEntry* entry) override
        {
            RecordingProcessor::process(entry);
            if (entries().size() == 1)
                m_multi->addProcessor(m_added.get());
        }
        MultiProcessor* m_multi = nullptr;
        Reference<RecordingProcessor> m_added {new RecordingProcessor};
    };
    const Reference<MultiProcessor> multi = MultiProcessor::create();
    const Reference<Adding> adding(new Adding);
    adding->m_multi = multi.get();
    Reference<RecordingProcessor> after(new RecordingProcessor);
    multi->addProcessor(adding.get());
    multi->addProcessor(after.get());
    for (int count = 0; count < 2; ++count)
        multi->process(LogEntry::create().get());
    EXPECT_EQ(after->entries().size(), 2U);
    EXPECT_EQ(adding->m_added->entries().size(), 2U);
}

TEST(LogEntry, AnswersOnBothFaces)
{
    const Reference<LogEntry> entry = LogEntry::create();
    EXPECT_EQ(resultOf([&] { entry->getField(u"text"); }), RESULT_END_OF_FILE);
    for (int count = 0; count < 40; ++count) {
        entry->setField(u"text", new String(u"first"));
        entry->setField(u"text", new String(u"second"));
        EXPECT_EQ(fieldOf(*entry, u"text"), "second");
        EXPECT_EQ(namesOf(*entry).size(), static_cast<std::size_t>(count) + 1);
        entry->setField(String::valueOf(count), new Integer32(count));
        EXPECT_EQ(fieldOf(*entry, String::valueOf(count / 2).getData()), std::to_string(count / 2));
    }

    Reference<vorb::ILogEntry> component(static_cast<ILogEntry*>(entry.get()));
    ASSERT_TRUE(component != nullptr);
    EXPECT_EQ(component->HasField(u"text"), 0);
    Reference<IVXCharBuffer> buffer;
    EXPECT_EQ(component->GetField(u"text", IVXCharBuffer::IID, buffer.outVoid()), 0);
    EXPECT_EQ(buffer->GetLength(), 6);
    EXPECT_EQ(component->GetField(u"text", vorb::ILogEntry::IID, buffer.outVoid()), RESULT_NO_INTERFACE);
    EXPECT_EQ(component->GetField(u"level", IVXCharBuffer::IID, buffer.outVoid()), RESULT_FAIL);
    EXPECT_TRUE(buffer == nullptr);
    EXPECT_EQ(component->SetField(u"level", Reference<Integer32>(new Integer32(5))->GetUnknown()), 0);
    EXPECT_EQ(component->SetField(u"none", nullptr), RESULT_FAIL);
    struct Hesitant : String {
        std::int32_t QueryInterface(const _GUID&, void** out) override { return *out = nullptr, RESULT_FALSE; }
    };
    entry->setField(u"level", new Hesitant);
    EXPECT_EQ(component->GetField(u"level", IVXCharBuffer::IID, buffer.outVoid()), RESULT_FALSE);

    Reference<vorb::IFieldIterator> names;
    ASSERT_EQ(component->GetFieldIterator(names.out()), 0);
    Names all;
    while (names->HasNext() == 0) {
        String name;
        ASSERT_EQ(names->Next(&name), 0);
        all.insert(name.toUtf8());
    }
    EXPECT_EQ(all, namesOf(*entry));
}

TEST(VorbProcessor, HandsOverTheComponentFace)
{
    struct Component : Object, vorb::ILogProcessor {
        VX_OBJECT_UNKNOWN(Object)
        std::int32_t Process(vorb::ILogEntry* entry) override { return entry->HasField(u"bad") == 0 ? RESULT_FAIL : 0; }
    };
    const Reference<ILogProcessor> processor = vorb::VorbProcessor::create(new Component);
    const Reference<LogEntry> entry = LogEntry::create();
    processor->process(entry.get());
    EXPECT_EQ(resultOf([&] { processor->process(nullptr); }), RESULT_NO_INTERFACE);
    entry->setField(u"bad", new String);
    EXPECT_THROW(processor->process(entry.get()), ResultException);

    /// An entry without a component interface: it returns `m_answer`.
    struct Faceless : Object, ILogEntry {
        explicit Faceless(std::int32_t answer)
            : m_answer(answer)
        {
        }
        std::uint32_t AddRef() const override { return Object::AddRef(); }
        std::uint32_t Release() const override { return Object::Release(); }
        std::int32_t QueryInterface(const _GUID&, void** out) override { return *out = nullptr, m_answer; }
        void setField(const String&, const Object*) override { }
        Reference<const Object> getField(const String&) const override { return nullptr; }
        bool hasField(const String&) const override { return false; }
        Reference<const collections::Set<String>> getFieldNames() const override { return nullptr; }
        const std::int32_t m_answer;
    };
    for (const std::int32_t answer : {RESULT_NO_INTERFACE, RESULT_FAIL, RESULT_OK}) {
        const Reference<Faceless> entryWithout(new Faceless(answer));
        EXPECT_EQ(resultOf([&] { processor->process(entryWithout.get()); }), RESULT_NO_INTERFACE) << answer;
    }
}

/// A list of texts, any of which may be null.
Reference<collections::List<Object>> textsOf(const std::vector<const char16_t*>& texts)
{
    Reference<collections::List<Object>> list(new collections::List<Object>(new collections::vorb::ArrayList));
    for (const char16_t* text : texts)
        list->add(text != nullptr ? new String(text) : nullptr);
    return list;
}

TEST(Placeholders, AreReplacedInOrderWithoutAGapAndInOnePass)
{
    const std::tuple<const char16_t*, std::vector<const char16_t*>, const char16_t*> cases[] = {
        {u"{1} before {0}", {u"a", u"b"}, u"b before a"},
        {u"{0}{0}{1}{0}", {u"x", u"{0}"}, u"xx{0}x"},
        {u"{0} and {2}", {u"a", u"b", u"c"}, u"a and {2}"},
        {u"{0} {1}", {u"a"}, u"{0} {1}"},
        {u"{00}{ 0}{", {u"a"}, u"{00}{ 0}{"},
        {u"[{1}|{0}]", {nullptr, u"b"}, u"[b|]"},
    };
    for (const auto& [pattern, arguments, expected] : cases)
        EXPECT_EQ(detail::expandPlaceholders(pattern, *textsOf(arguments)), expected) << String(pattern);
    const Reference<collections::List<Object>> numbers = textsOf({});
    std::string pattern, expected;
    for (int number = 49'999; number >= 0; --number) { // takes very long unless it is one pass
        pattern += "{" + std::to_string(number) + "}{";
        expected += std::to_string(49'999 - number) + "{";
        numbers->add(new Integer32(number));
    }
    EXPECT_EQ(detail::expandPlaceholders(String(pattern), *numbers).toUtf8(), expected);
}

TEST(TimeStamp, PrintsItselfSortable)
{
    EXPECT_EQ(TimeStamp(STRUCT_VX_TIME {2026, 11, 4, 19, 2, 58, 1, 123}).toLog(), u"20261119025801.123");
    EXPECT_EQ(TimeStamp(STRUCT_VX_TIME {}).toLog(), u"0.000");
    EXPECT_EQ(TimeStamp(4'102'444'800U).toLog(), u"21000101000000.000");
    EXPECT_THROW(TimeStamp(INT64_MAX), ResultException);
    EXPECT_THROW(TimeStamp(STRUCT_VX_TIME {}).toString(), ResultException);
}

TEST(StringBundleLogger, LogsTheTextsOfABundle)
{
    const Reference<collections::StringHashMap> texts(new collections::StringHashMap);
    texts->put(u"late", Reference<String>(new String(u"{1} ist {0} zu spät")).get());
    const Reference<i18n::StringBundle> bundle(new i18n::StringMapBundle(texts.get(), nullptr));
    const Reference<RecordingProcessor> processor(new RecordingProcessor);
    const Reference<Logger> target(new Logger);
    target->addProcessor(processor.get());
    StringBundleLogger logger(bundle.get(), target.get());

    logger.log(3, u"late", *textsOf({u"7 s", u"{0}"}));
    EXPECT_THROW(logger.log(5, u"early"), Exception);
    EXPECT_EQ(fieldOf(*processor->entries()[0], u"text"), "{0} ist 7 s zu spät");
    EXPECT_EQ(fieldOf(*processor->entries()[0], u"level"), "3");
}

} // namespace
} // namespace vx::log
