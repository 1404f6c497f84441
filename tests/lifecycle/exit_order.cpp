// The library starts before the constructors of this program and stops after its destructors. Objects that exist
// longer, such as static objects of libraries that are constructed earlier, may contain text. So this program also runs
// code before the first constructor of any library and after the last destructor.
#include "vx/Class.h"
#include "vx/Exceptions.h"
#include "vx/GlobalLock.h"
#include "vx/Library.h"
#include "vx/String.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vxsys/Process.h"

#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

constexpr int LEFT_MAIN = 42;
constexpr std::int32_t FAILED = static_cast<std::int32_t>(0x80004005);

alignas(vx::String) unsigned char g_textStorage[sizeof(vx::String)];
vx::String* g_text = nullptr;

[[noreturn]] void end(int status, const char* words)
{
    std::fputs(words, stderr);
    std::_Exit(status);
}

bool isStopped()
{
    if (g_pGlobalLock != nullptr || VXLIBLibUninit() != FAILED)
        return false;
    int refusals = 0;
    try {
        vx::Class::forName(u"CVXString");
    } catch (const vx::IllegalStateException&) {
        ++refusals;
    }
    try {
        vx::text::charset::ByteToCharConverter::getConverter(u"UTF-8");
    } catch (const vx::IllegalStateException&) {
        ++refusals;
    }
    return refusals == 2;
}

void afterAll(int status, void*)
{
    if (status != LEFT_MAIN)
        end(status, "the program fails\n");
    if (!isStopped())
        end(3, "the library has not stopped\n");
    if (*g_text != u"still here, and longer" || !vx::String().isEmpty())
        end(4, "the text is gone\n");
    g_text->~String();
    end(0, "stopped once, and the text was there\n");
}

void beforeAll(int, char**, char**)
{
    if (g_pGlobalLock != nullptr)
        end(5, "the library has started too early\n");
    g_text = new (g_textStorage) vx::String(u"still here");
    if (::on_exit(afterAll, nullptr) != 0)
        end(6, "not printed\n");
}

[[gnu::section(".preinit_array"), gnu::used]] void (*g_beforeAll)(int, char**, char**) = beforeAll;

/// Leaves a running child to the library, which collects it when it ends.
std::int32_t letChildRun()
{
    std::uint32_t pipes[3];
    std::uint32_t process = 0;
    const std::int32_t result = VXProcessCreate(u"/bin/cat", nullptr, nullptr, nullptr, 0, pipes, &process);
    return result < 0 ? result : VXProcessDetach(process);
}

/// Constructed after the start and destroyed before the stop.
struct Static {
    Static()
    {
        if (g_pGlobalLock == nullptr)
            end(7, "the library starts too late\n");
    }
    ~Static()
    {
        if (vx::Class::forName(u"CVXString")->getName() == nullptr)
            end(8, "the library stops too early\n");
        if (letChildRun() != 0)
            end(10, "no child can be left to the library at the end\n");
    }
} g_static;

} // namespace

int main()
{
    // Another start, and its stop.
    if (VXLIBLibInit() != 0 || VXLIBLibUninit() != 0 || isStopped())
        return 1;
    *g_text += u", and longer";
    if (letChildRun() != 0)
        return 10;
    // Stops the library that the loader has started, and starts it again.
    if (VXLIBLibUninit() != 0 || !isStopped())
        return 2;
    return VXLIBLibInit() == 0 && g_pGlobalLock != nullptr ? LEFT_MAIN : 9;
}
