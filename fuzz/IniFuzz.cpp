#include "Law.h"
#include "vx/util/IniFile.h"
#include "vx/util/IniFileException.h"
#include "vx/util/IniFileIterator.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

using vx::String;
using vx::util::IniFile;

/// A file in memory for the whole run.
class File {
public:
    File()
    {
        const int descriptor = ::mkstemp(m_path);
        VX_LAW(descriptor != -1);
        ::close(descriptor);
    }
    ~File() { ::unlink(m_path); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    void put(const std::uint8_t* data, std::size_t size) const
    {
        std::FILE* file = std::fopen(m_path, "wb");
        VX_LAW(file != nullptr && std::fwrite(data, 1, size, file) == size && std::fclose(file) == 0);
    }
    String path() const { return String(m_path); }

private:
    char m_path[32] = "/dev/shm/ini-fuzz-XXXXXX";
};

/// All values, checked on the way. `*isReadable`: no key begins with what a line cannot begin with.
std::size_t countKeys(IniFile& file, bool* isReadable)
{
    constexpr unsigned int LONGEST = 2048;
    std::size_t count = 0;
    for (vx::util::IniFileSetIterator sets(file, u""); sets.hasNext();) {
        const String set = sets.next();
        VX_LAW(set.indexOf(u'\n') == -1);
        for (vx::util::IniFileKeyIterator keys(file, set.getData()); keys.hasNext(); ++count) {
            const String key = keys.next();
            char16_t chars[LONGEST];
            VX_LAW(file.GetValue(set.getData(), key.getData(), chars, LONGEST) == 0);
            String value(chars);
            *isReadable = *isReadable && !key.startsWith(u"\uFEFF");
            VX_LAW(key.indexOf(u'=') == -1 && value.indexOf(u'\n') == -1);
            String trimmed(value);
            trimmed.trim();
            VX_LAW(trimmed.equals(value));
        }
    }
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const File s_file;
    s_file.put(data, size);
    IniFile file(s_file.path().getData(), nullptr, 1);
    bool isReadable = true;
    const std::size_t keys = countKeys(file, &isReadable);
    VX_LAW(keys <= static_cast<std::size_t>(std::count(data, data + size, '=')));

    // A change is found again.
    VX_LAW(file.AddKey(u"added set", u"added key", u"added value", true) == 0);
    IniFile again(s_file.path().getData(), nullptr, 1);
    if (!isReadable)
        return 0;
    char16_t value[16];
    VX_LAW(again.GetValue(u"ADDED SET", u"ADDED KEY", value, 16) == 0 && String(value).equals(u"added value"));
    VX_LAW(countKeys(again, &isReadable) <= keys + 1);
    return 0;
}
