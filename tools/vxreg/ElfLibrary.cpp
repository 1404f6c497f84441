#include "vxreg/ElfLibrary.h"

#include "common/Failure.h"
#include "vxreg/Texts.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <elf.h>
#include <filesystem>
#include <fstream>
#include <link.h>
#include <string_view>

namespace vxreg {

namespace {

using vxtools::Failure;

/// Reads parts of a file and checks that they lie within it.
class ElfFile {
public:
    explicit ElfFile(const std::string& path)
        : m_path(path)
        , m_stream(open(path))
    {
        m_stream.seekg(0, std::ios::end);
        m_size = static_cast<std::uint64_t>(m_stream.tellg());
    }

    template <class T>
    std::vector<T> read(std::uint64_t offset, std::uint64_t size)
    {
        constexpr std::uint64_t LIMIT = 1 << 28; // a sparse file can claim to be of any size
        if (offset > m_size || size > m_size - offset || size > LIMIT)
            throw Failure(m_path, TRUNCATED());
        std::vector<T> items(size / sizeof(T));
        m_stream.seekg(static_cast<std::streamoff>(offset));
        if (!m_stream.read(
                reinterpret_cast<char*>(items.data()), static_cast<std::streamsize>(items.size() * sizeof(T))))
            throw Failure(m_path, TRUNCATED());
        return items;
    }

    ElfW(Ehdr) header() { return read<ElfW(Ehdr)>(0, sizeof(ElfW(Ehdr))).front(); }

private:
    static std::ifstream open(const std::string& path)
    {
        std::error_code error;
        if (const auto status = std::filesystem::status(path, error); exists(status) && !is_regular_file(status))
            throw Failure(path, NO_LIBRARY());
        std::ifstream stream(path, std::ios::binary);
        if (!stream)
            throw Failure(path, vxtools::textOfError(errno));
        return stream;
    }

    std::string m_path;
    std::ifstream m_stream;
    std::uint64_t m_size = 0;
};

bool isExported(const ElfW(Sym) & symbol)
{
    const unsigned binding = symbol.st_info >> 4U;
    const unsigned visibility = symbol.st_other & 3U;
    // The names of versions are absolute symbols.
    return symbol.st_shndx != SHN_UNDEF && symbol.st_shndx != SHN_ABS && binding != STB_LOCAL
        && (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

} // namespace

ElfLibrary readElfLibrary(const std::string& path)
{
    ElfFile file(path);
    const auto ident = file.read<unsigned char>(0, SELFMAG);
    if (!std::equal(ident.begin(), ident.end(), ELFMAG))
        throw Failure(path, NO_LIBRARY());
    const ElfW(Ehdr) header = file.header();
    const ElfW(Ehdr) own = ElfFile("/proc/self/exe").header();
    if (header.e_ident[EI_CLASS] != own.e_ident[EI_CLASS] || header.e_ident[EI_DATA] != own.e_ident[EI_DATA]
        || header.e_machine != own.e_machine)
        throw Failure(path, OTHER_MACHINE());
    if (header.e_type != ET_DYN)
        throw Failure(path, NO_LIBRARY());
    if (header.e_shentsize != sizeof(ElfW(Shdr)))
        throw Failure(path, TRUNCATED());

    const auto sections = file.read<ElfW(Shdr)>(header.e_shoff, std::uint64_t {header.e_shnum} * sizeof(ElfW(Shdr)));
    const auto table = std::find_if(
        sections.begin(), sections.end(), [](const ElfW(Shdr) & section) { return section.sh_type == SHT_DYNSYM; });
    if (table == sections.end() || table->sh_link >= sections.size())
        throw Failure(path, TRUNCATED());
    const ElfW(Shdr)& texts = sections[table->sh_link];
    std::vector<char> names = file.read<char>(texts.sh_offset, texts.sh_size);
    names.push_back('\0');

    ElfLibrary library;
    for (const ElfW(Sym) & symbol : file.read<ElfW(Sym)>(table->sh_offset, table->sh_size)) {
        if (!isExported(symbol) || symbol.st_name >= names.size())
            continue;
        library.exported.emplace_back(names.data() + symbol.st_name);
        if (symbol.st_info >> 4U == STB_GNU_UNIQUE)
            library.unique.push_back(library.exported.back());
    }
    return library;
}

} // namespace vxreg
