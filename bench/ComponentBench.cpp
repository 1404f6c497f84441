// What it costs to have an object made by name, and to keep a setting: each beside the same work by hand.
#include "examples/component/IGreeter.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Class.h"
#include "vx/Exception.h"
#include "vx/Reference.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/util/RegistryKey.h"
#include "vx/vorb/IVXClassFactory.h"
#include "vxsys/Component.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <thread>
#include <unistd.h>
#include <unordered_map>

namespace {

using namespace vx;

void newString(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Reference<String>(new String).get());
}
BENCHMARK(newString);

void createByClassName(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Reference<Object>(Class::forName(u"CVXString")->createInstance()).get());
}
BENCHMARK(createByClassName);

/// The least that finds a class by its name.
void createByMap(benchmark::State& state)
{
    using Create = Reference<Object> (*)();
    std::unordered_map<std::u16string_view, Create> creators;
    for (const char16_t* name : {u"CVXHashMap", u"CVXArrayList", u"CVXMutex", u"CVXGate", u"CVXEvent"})
        creators[name] = [] { return Reference<Object>(new Object); };
    creators[u"CVXString"] = [] { return Reference<Object>(new String); };
    const char16_t* name = u"CVXString";
    for (auto _ : state) {
        benchmark::DoNotOptimize(name);
        benchmark::DoNotOptimize(creators.find(name)->second().get());
    }
}
BENCHMARK(createByMap);

void dynamicCast(benchmark::State& state)
{
    const Reference<Object> object(new String);
    IVXUnknown* unknown = object->GetUnknown();
    for (auto _ : state) {
        benchmark::DoNotOptimize(unknown);
        benchmark::DoNotOptimize(Reference<IVXCharBuffer>(dynamic_cast<IVXCharBuffer*>(unknown)).get());
    }
}
BENCHMARK(dynamicCast);

void queryInterface(benchmark::State& state)
{
    const Reference<Object> object(new String);
    IVXUnknown* unknown = object->GetUnknown();
    for (auto _ : state) {
        benchmark::DoNotOptimize(unknown);
        Reference<IVXCharBuffer> buffer;
        if (unknown->QueryInterface(IVXCharBuffer::IID, buffer.outVoid()) != RESULT_OK)
            state.SkipWithError("no interface");
        benchmark::DoNotOptimize(buffer.get());
    }
}
BENCHMARK(queryInterface);

/// A store of its own with the greeter of the examples in it.
class Store {
public:
    Store()
    {
        std::filesystem::copy_file(VX_GREETER, m_scratch / "greeter.so");
        std::filesystem::permissions(m_scratch / "greeter.so", std::filesystem::perms(0755));
        throwIfFailed(VXComRegisterLibrary((m_scratch / "greeter.so").u16string().c_str()));
    }
    const Scratch& scratch() const { return m_scratch; }

private:
    Scratch m_scratch;
    ScopedVariable m_named {"VXSYS4_REGISTRY", (m_scratch / "store").c_str()};
};

/// What has stood in the store for a while, as settings do.
void letSettle()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
}

void createByProgId(benchmark::State& state)
{
    const Store store;
    letSettle();
    for (auto _ : state) {
        Reference<IGreeter> greeter;
        if (VXComCreateObjectByProgID(u"Example.Greeter", nullptr, &IGreeter::IID, greeter.outVoid()) != RESULT_OK)
            state.SkipWithError("no object");
    }
    VXComFreeUnusedLibraries();
}
BENCHMARK(createByProgId);

/// The same object by a symbol of the library, for whoever knows file and class.
void createBySymbol(benchmark::State& state)
{
    const Store store;
    _GUID classId;
    throwIfFailed(VXComClassIDFromProgID(u"Example.Greeter", &classId));
    void* const library = ::dlopen((store.scratch() / "greeter.so").c_str(), RTLD_NOW | RTLD_LOCAL);
    const auto getClassObject
        = reinterpret_cast<std::int32_t (*)(const _GUID*, const _GUID*, void**)>(::dlsym(library, "VXGetClassObject"));
    for (auto _ : state) {
        Reference<IVXClassFactory> factory;
        Reference<IGreeter> greeter;
        if (getClassObject(&classId, &IVXClassFactory::IID, factory.outVoid()) != RESULT_OK
            || factory->CreateInstance(nullptr, IGreeter::IID, greeter.outVoid()) != RESULT_OK)
            state.SkipWithError("no object");
    }
    ::dlclose(library);
}
BENCHMARK(createBySymbol);

void readValue(benchmark::State& state)
{
    const Store store;
    const util::RegistryKey key(VX_HKEY_USER, u"Software\\Bench");
    key.setValue(u"number", 5);
    letSettle();
    for (auto _ : state) {
        if (key.getValueUINT32(u"number") != 5)
            state.SkipWithError("another value");
    }
}
BENCHMARK(readValue);

void readFileByHand(benchmark::State& state)
{
    const Scratch scratch;
    put(scratch / "number", "5");
    const std::string path = (scratch / "number").string();
    for (auto _ : state) {
        char digit = 0;
        const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (::read(file, &digit, 1) != 1 || digit != '5')
            state.SkipWithError("another value");
        ::close(file);
    }
}
BENCHMARK(readFileByHand);

void writeValue(benchmark::State& state)
{
    const Store store;
    const util::RegistryKey key(VX_HKEY_USER, u"Software\\Bench");
    std::uint32_t number = 0;
    for (auto _ : state)
        key.setValue(u"number", ++number);
    if (key.getValueUINT32(u"number") != number)
        state.SkipWithError("another value");
}
BENCHMARK(writeValue)->UseRealTime();

/// In a key of many values, on a file system in memory, so that the work of the processor is seen.
constexpr int MANY_VALUES = 5000;
constexpr const char* IN_MEMORY = "/dev/shm";

void writeValueOfMany(benchmark::State& state)
{
    const ScopedVariable inMemory("TMPDIR", IN_MEMORY);
    const Store store;
    const util::RegistryKey key(VX_HKEY_USER, u"Software\\Bench");
    for (int value = 0; value < MANY_VALUES; ++value)
        key.setValue(u"number" + String::valueOf(value), value);
    std::uint32_t number = MANY_VALUES;
    for (auto _ : state)
        key.setValue(u"number2500", ++number);
    if (key.getValueUINT32(u"number2500") != number)
        state.SkipWithError("another value");
}
BENCHMARK(writeValueOfMany)->UseRealTime();

/// The least that a kill and a power failure leave whole: write beside, flush, rename, flush the folder.
void replaceFile(benchmark::State& state, const std::string& content)
{
    const Scratch scratch;
    const std::string path = (scratch / "number").string();
    const int folder = ::open(scratch.getPath().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (auto _ : state) {
        const int file = ::open((path + ".new").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (::write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size()) || ::fsync(file) != 0)
            state.SkipWithError("not written");
        ::close(file);
        if (std::rename((path + ".new").c_str(), path.c_str()) != 0 || ::fsync(folder) != 0)
            state.SkipWithError("not renamed");
    }
    ::close(folder);
}

void replaceFileByHand(benchmark::State& state)
{
    replaceFile(state, "5");
}
BENCHMARK(replaceFileByHand)->UseRealTime();

/// As large as the file of that key.
void replaceFileByHandOfMany(benchmark::State& state)
{
    const ScopedVariable inMemory("TMPDIR", IN_MEMORY);
    replaceFile(state, std::string(MANY_VALUES * 36, '5'));
}
BENCHMARK(replaceFileByHandOfMany)->UseRealTime();

} // namespace
