// The right column of docs/from-the-standard-library.md, line by line.
#include <vx/vxlib4.h>

#undef NDEBUG
#include <cassert>
#include <filesystem>
#include <iostream>
#include <unordered_set>

using namespace vx;

namespace {

void texts()
{
    String s = u"Grüße";
    s += u'!';
    assert(s.getLength() == 6);
    assert(s.view().size() == 6);
    assert(s.substring(0, 2) == u"Gr");
    assert(s.indexOf(u"üß") == 2);
    assert(s.startsWith(u"Gr") && s.contains(u"ß"));
    s.replace(0, 2, u"G");
    const std::string narrow = s.toUtf8();
    const String wide {std::string_view(narrow)};
    std::cout << wide << '\n';
    const String line = String::formatted(u"{0}: {1}", wide, 42);
    assert(line == u"Güße!: 42");
    const std::optional<std::int32_t> number = Integer32::tryParse(u"42");
    assert(*number == 42 && String::valueOf(*number) == u"42");
    char latin[16];
    const std::int32_t size = wide.getBytes(latin, sizeof latin, u"ISO-8859-1");
    assert(size == 6);
}

void elements()
{
    collections::List<String> names(new collections::vorb::ArrayList);
    names.add(new String(u"Ada"));
    names.sort();
    collections::List<String> few(new collections::vorb::LinkedList, {u"a", u"b"});
    const std::vector<Reference<String>> copy(few.begin(), few.end());
    assert(copy.size() == 2);
    assert(*names.get(0) == u"Ada" && names.getSize() == 1);
    for (const Reference<String>& name : names)
        std::cout << *name << '\n';
    collections::Map<String, Integer32> ages(new collections::vorb::HashMap);
    ages.put(new String(u"Ada"), new Integer32(36));
    const String ada(u"Ada");
    assert(ages.containsKey(&ada) && *ages.get(&ada) == 36);
    Str1HashMap<int> counts;
    counts.put(Str1(u"word"), 1);
    const math::BigInteger big = 12345678901234567890_big * 10_big;
    assert(big > 0_big);
}

void work()
{
    const Reference<Object> shared(new Integer32(1));
    const auto& cast = dynamic_cast<const Integer32&>(*shared);
    assert(cast == 1);
    int sum = 0;
    exec::Thread thread([&sum](int part) { sum += part; }, 5);
    thread.start();
    thread.join();
    exec::Task<int> task = exec::runAsync([](int a, int b) { return a + b; }, 2, sum);
    assert(task.get() == 7);
    sync::Mutex mutex;
    const sync::ScopedLock lock(mutex);
    exec::Thread::sleep(1);
    try {
        throwIfFailed(RESULT_NOT_FOUND);
    } catch (const Exception& failure) {
        std::cout << explain(failure) << '\n';
        assert(errorCodeOf(failure) == std::errc::no_such_file_or_directory);
    }
}

void files(const String& folder)
{
    const String path = folder + u"/notes.txt";
    {
        const Reference<io::OutputStream> file(new io::FileOutputStream(path, false));
        io::OutputStreamWriter out(file.get(), u"UTF-8", 4096);
        out.write(u"one\ntwo\n");
        out.flush();
    }
    io::BufferedReader in(new io::InputStreamReader(new io::FileInputStream(path), u"UTF-8", 4096), 4096);
    int lines = 0;
    for (String line; in.readLine(line) >= 0;)
        ++lines;
    assert(lines == 2);
    assert(util::FilePath(path).getExtension() == u".txt");
    const std::unordered_set<util::FilePath> seen {path};
    assert(seen.contains(folder + u"/./notes.txt"));
}

} // namespace

int main()
{
    texts();
    elements();
    work();
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "vx-from-std";
    std::filesystem::create_directory(folder);
    files(String(std::string_view(folder.string())));
    std::filesystem::remove_all(folder);
}
