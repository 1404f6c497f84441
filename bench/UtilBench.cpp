/// Paths, command lines, INI files, property sets and identifiers, beside Qt and POCO where they are installed.

#include "tests/vxsys/Scratch.h"
#include "vx/util/CommandLineParser.h"
#include "vx/util/FilePath.h"
#include "vx/util/Guid.h"
#include "vx/util/IniFile.h"
#include "vx/util/PathNormalizer.h"
#include "vx/util/PropertySet.h"

#include <benchmark/benchmark.h>

#ifdef VX_BENCH_QT
#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QSettings>
#include <QUuid>
#endif
#ifdef VX_BENCH_POCO
#include <Poco/Util/IniFileConfiguration.h>
#endif

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace vx;
using namespace vx::util;

void check(benchmark::State& state, bool isRight)
{
    if (!isRight)
        state.SkipWithError("wrong result");
}

void normalizePath(benchmark::State& state)
{
    const String path(u"/usr/local/share/../lib/./service//plugins/network.so");
    PathNormalizer normalizer(PathNormalizer::SLASH_FORWARD);
    String result;
    for (auto _ : state)
        result = normalizer.normalize(path);
    check(state, result == u"/usr/local/lib/service/plugins/network.so");
}
BENCHMARK(normalizePath);

void partsOfPath(benchmark::State& state)
{
    const String path(u"C:\\usr\\local\\share\\..\\lib\\service\\network.tar.gz");
    int length = 0;
    for (auto _ : state) {
        const FilePath file(path);
        length = file.getName().getLength() + file.getExtension().getLength() + file.getDirectory().getLength();
    }
    check(state, length == 14 + 3 + 24);
}
BENCHMARK(partsOfPath);

#ifdef VX_BENCH_QT
void normalizePathQt(benchmark::State& state)
{
    const QString path("/usr/local/share/../lib/./service//plugins/network.so");
    QString result;
    for (auto _ : state)
        result = QDir::cleanPath(path);
    check(state, result == "/usr/local/lib/service/plugins/network.so");
}
BENCHMARK(normalizePathQt);

void partsOfPathQt(benchmark::State& state)
{
    const QString path("/usr/local/share/../lib/service/network.tar.gz");
    int length = 0;
    for (auto _ : state) {
        const QFileInfo file(QDir::cleanPath(path));
        length = file.fileName().size() + file.suffix().size() + file.path().size();
    }
    check(state, length == 14 + 2 + 22);
}
BENCHMARK(partsOfPathQt);
#endif

/// One option in four, and one option in eight with a value after it.
class Arguments {
public:
    explicit Arguments(std::int64_t count)
    {
        m_texts.emplace_back("service");
        for (std::int64_t index = 1; index < count; ++index)
            m_texts.push_back(index % 8 == 2 ? "--level=" + std::to_string(index)
                    : index % 8 == 6         ? "--verbose"
                                             : "file" + std::to_string(index) + ".log");
        for (std::string& text : m_texts)
            m_pointers.push_back(text.data());
    }
    int count() const { return static_cast<int>(m_pointers.size()); }
    char** pointers() { return m_pointers.data(); }
    const std::vector<std::string>& texts() const { return m_texts; }

private:
    std::vector<std::string> m_texts;
    std::vector<char*> m_pointers;
};

void commandLine(benchmark::State& state)
{
    Arguments arguments(state.range(0));
    bool isRight = true;
    for (auto _ : state) {
        CommandLineParser parser;
        parser.defineOption(u"level", 1, nullptr);
        parser.defineOption(u"verbose", 0, nullptr);
        parser.parse(arguments.count(), arguments.pointers());
        isRight = isRight && parser.isPresent(u"verbose") && parser.getElementCount() == arguments.count();
    }
    check(state, isRight);
}
BENCHMARK(commandLine)->Arg(10)->Arg(100)->Arg(10'000);

#ifdef VX_BENCH_QT
void commandLineQt(benchmark::State& state)
{
    const Arguments arguments(state.range(0));
    bool isRight = true;
    for (auto _ : state) {
        QStringList list;
        for (const std::string& text : arguments.texts())
            list.append(QString::fromUtf8(text.data(), static_cast<int>(text.size())));
        QCommandLineParser parser;
        parser.addOption(QCommandLineOption("level", "", "number"));
        parser.addOption(QCommandLineOption("verbose"));
        isRight = parser.parse(list) && isRight && parser.isSet("verbose");
    }
    check(state, isRight);
}
BENCHMARK(commandLineQt)->Arg(10)->Arg(100)->Arg(10'000);
#endif

/// Settings in sets of 50, the last of which is "service0". The file has stood for a while, as settings do.
class SettledFile {
public:
    explicit SettledFile(std::int64_t settings = 1000)
    {
        constexpr std::int64_t OF_SET = 50;
        std::string text;
        for (std::int64_t set = settings / OF_SET; set-- > 0;) {
            text += "[service" + std::to_string(set) + "]\n";
            for (std::int64_t key = 0; key < OF_SET; ++key)
                text += "setting" + std::to_string(key) + "=value " + std::to_string(key) + "\n";
        }
        put(path(), text);
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
    }
    std::filesystem::path path() const { return m_scratch / "service.ini"; }

private:
    Scratch m_scratch;
};

/// Whether `ini` gives a setting of the last set.
bool givesSetting(IniFile& ini)
{
    char16_t value[20] {};
    return ini.GetValue(u"service0", u"setting7", value, 20) == 0 && std::u16string_view(value) == u"value 7";
}

void iniLoad(benchmark::State& state)
{
    const SettledFile settled(state.range(0));
    const std::u16string path = settled.path().u16string();
    bool isRight = true;
    for (auto _ : state) {
        IniFile file(path.c_str(), nullptr, 1);
        isRight = givesSetting(file) && isRight;
    }
    check(state, isRight);
}
BENCHMARK(iniLoad)->Arg(1000)->Arg(10'000)->Unit(benchmark::kMicrosecond);

void iniGet(benchmark::State& state)
{
    const SettledFile settled;
    IniFile file(settled.path().u16string().c_str(), nullptr, 1);
    bool isRight = true;
    for (auto _ : state)
        isRight = givesSetting(file) && isRight;
    check(state, isRight);
}
BENCHMARK(iniGet);

#ifdef VX_BENCH_QT
/// The peer caches the settings of each path, so that each round reads a file with another name.
void iniLoadQt(benchmark::State& state)
{
    const SettledFile settled(state.range(0));
    const QString path = QString::fromStdString(settled.path().string());
    bool isRight = true;
    int number = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const QString own = path + QString::number(++number);
        std::filesystem::create_hard_link(settled.path(), own.toStdString());
        state.ResumeTiming();
        {
            const QSettings file(own, QSettings::IniFormat);
            isRight = file.allKeys().size() == state.range(0) && isRight; // a set is read when it is asked for
        }
        state.PauseTiming();
        std::filesystem::remove(own.toStdString());
        state.ResumeTiming();
    }
    check(state, isRight);
}
BENCHMARK(iniLoadQt)->Arg(1000)->Arg(10'000)->Unit(benchmark::kMicrosecond);

void iniGetQt(benchmark::State& state)
{
    const SettledFile settled;
    const QSettings file(QString::fromStdString(settled.path().string()), QSettings::IniFormat);
    QString value;
    for (auto _ : state)
        value = file.value("service0/setting7").toString();
    check(state, value == "value 7");
}
BENCHMARK(iniGetQt);
#endif

#ifdef VX_BENCH_POCO
using PocoFile = Poco::AutoPtr<Poco::Util::IniFileConfiguration>;

void iniLoadPoco(benchmark::State& state)
{
    const SettledFile settled(state.range(0));
    const std::string path = settled.path().string();
    bool isRight = true;
    for (auto _ : state) {
        const PocoFile file(new Poco::Util::IniFileConfiguration(path));
        isRight = file->getString("service0.setting7") == "value 7" && isRight;
    }
    check(state, isRight);
}
BENCHMARK(iniLoadPoco)->Arg(1000)->Arg(10'000)->Unit(benchmark::kMicrosecond);

void iniGetPoco(benchmark::State& state)
{
    const SettledFile settled;
    const PocoFile file(new Poco::Util::IniFileConfiguration(settled.path().string()));
    std::string value;
    for (auto _ : state)
        value = file->getString("service0.setting7");
    check(state, value == "value 7");
}
BENCHMARK(iniGetPoco);
#endif

/// Keys of the outermost of several sets, each of which is the parent of another one.
constexpr int SETTINGS = 20;

std::string settingOf(int set, int number)
{
    return "service/level" + std::to_string(set) + "/setting" + std::to_string(number);
}

void propertyOfParent(benchmark::State& state)
{
    Reference<PropertySet> set;
    std::vector<String> wanted;
    for (int level = 0; level <= state.range(0); ++level) {
        set = new PropertySet(set.get());
        for (int number = 0; number < SETTINGS; ++number)
            set->set(String(settingOf(level, number)), u"value");
    }
    for (int number = 0; number < SETTINGS; ++number)
        wanted.emplace_back(settingOf(0, number));
    int length = 0;
    for (auto _ : state) {
        length = 0;
        for (const String& key : wanted)
            length += set->get(key).getLength();
    }
    check(state, length == 5 * SETTINGS);
    state.SetItemsProcessed(state.iterations() * SETTINGS);
}
BENCHMARK(propertyOfParent)->Arg(0)->Arg(3);

#ifdef VX_BENCH_QT
void propertyOfParentQt(benchmark::State& state)
{
    std::vector<QHash<QString, QString>> sets(static_cast<std::size_t>(state.range(0)) + 1);
    std::vector<QString> wanted;
    for (std::size_t level = 0; level < sets.size(); ++level) {
        for (int number = 0; number < SETTINGS; ++number)
            sets[level][QString::fromStdString(settingOf(static_cast<int>(level), number))] = "value";
    }
    for (int number = 0; number < SETTINGS; ++number)
        wanted.push_back(QString::fromStdString(settingOf(0, number)));
    const auto get = [&](const QString& key) {
        for (std::size_t level = sets.size(); level-- > 0;) {
            const auto found = sets[level].constFind(key);
            if (found != sets[level].constEnd())
                return *found;
        }
        return QString();
    };
    int length = 0;
    for (auto _ : state) {
        length = 0;
        for (const QString& key : wanted)
            length += get(key).size();
    }
    check(state, length == 5 * SETTINGS);
    state.SetItemsProcessed(state.iterations() * SETTINGS);
}
BENCHMARK(propertyOfParentQt)->Arg(0)->Arg(3);
#endif

constexpr std::u16string_view IDENTIFIER = u"{6FCCA1A2-5532-4EB8-B8E0-20D4FB6623D6}";

void printGuid(benchmark::State& state)
{
    const Guid guid(IDENTIFIER.data());
    String text;
    for (auto _ : state) {
        benchmark::ClobberMemory();
        text = guid.toString();
    }
    check(state, text.view() == IDENTIFIER);
}
BENCHMARK(printGuid);

#ifdef VX_BENCH_QT
void printGuidQt(benchmark::State& state)
{
    const QUuid guid(QString::fromUtf16(IDENTIFIER.data()));
    QString text;
    for (auto _ : state) {
        benchmark::ClobberMemory();
        text = guid.toString();
    }
    check(state, text.toUpper() == QString::fromUtf16(IDENTIFIER.data()));
}
BENCHMARK(printGuidQt);
#endif

} // namespace
