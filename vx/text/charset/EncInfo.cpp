#include "vx/text/charset/EncInfo.h"

#include "vx/Result.h"
#include "vx/Str1HashMap.h"
#include "vx/text/charset/detail/CodecStart.h"
#include "vx/text/charset/detail/CodecTable.h"
#include "vx/vorb/Boundary.h"
#include "vxsys/Number.h"

#include <algorithm>
#include <vector>

using namespace vx;

namespace {

/// The records, and all their names. Built when the library starts, and read without a lock afterwards.
class EncInfoTable {
public:
    EncInfoTable()
        : m_byName(101, 0.75F)
    {
        using namespace text::charset::detail;
        for (const CodecRow& row : codecTable()) {
            if (row.codePage != 0 && row.canonicalName == nullptr)
                m_infos.push_back({row.name, row.codePage, 0});
        }
        for (const CodePageRow& row : codePageTable())
            m_infos.push_back({row.name, row.codePage, 0});

        for (VXEncInfo& info : m_infos) {
            m_byName.put(upperCase(info.name), &info);
            char16_t digits[34];
            m_byName.put(VXLToStrW(static_cast<std::int32_t>(info.codePage), digits, 10), &info);
        }
        for (const CodecRow& row : codecTable()) {
            if (row.canonicalName != nullptr)
                addAlias(upperCase(row.name), upperCase(row.canonicalName));
        }
        for (const AliasRow& row : aliasTable())
            addAlias(row.alias, row.target);
    }

    const VXEncInfo* find(const char16_t* name) const
    {
        void* info = nullptr;
        m_byName.get(upperCase(name), info);
        return static_cast<const VXEncInfo*>(info);
    }

    const std::vector<VXEncInfo>& all() const noexcept { return m_infos; }

private:
    static Str1 upperCase(const char16_t* name)
    {
        Str1 key(name);
        key.toUpper();
        return key;
    }

    void addAlias(const Str1& alias, const Str1& target)
    {
        void* info = nullptr;
        if (m_byName.get(target, info))
            m_byName.put(alias, info);
    }

    std::vector<VXEncInfo> m_infos;
    Str1HashMap<void*> m_byName;
};

EncInfoTable* g_table = nullptr;

std::int32_t copyInfo(const char16_t* name, VXEncInfo* info)
{
    std::int32_t result = RESULT_FAIL;
    const std::int32_t failure = vorb::atBoundary([&] {
        const VXEncInfo* found = g_table != nullptr ? g_table->find(name) : nullptr;
        if (found == nullptr)
            return;
        *info = *found;
        result = RESULT_OK;
    });
    return failed(failure) ? failure : result;
}

} // namespace

namespace vx::text::charset::detail {

void buildEncInfo()
{
    g_table = new EncInfoTable;
}

void freeEncInfo() noexcept
{
    delete g_table;
    g_table = nullptr;
}

} // namespace vx::text::charset::detail

std::int32_t VXGetEncInfoByName(const char16_t* name, VXEncInfo* info)
{
    if (name == nullptr || info == nullptr)
        return RESULT_INVALID_ARGUMENT;
    return copyInfo(name, info);
}

std::int32_t VXGetEncInfoByCodePage(std::int32_t codePage, VXEncInfo* info)
{
    if (info == nullptr)
        return RESULT_INVALID_ARGUMENT;
    char16_t digits[34];
    return copyInfo(VXLToStrW(codePage, digits, 10), info);
}

std::int32_t VXEnumerateEncInfo(std::uint32_t* count, VXEncInfo* infos)
{
    if (count == nullptr || (*count > 0 && infos == nullptr))
        return RESULT_INVALID_ARGUMENT;
    if (g_table == nullptr)
        return RESULT_FAIL;
    const std::vector<VXEncInfo>& all = g_table->all();
    const std::uint32_t room = *count;
    *count = static_cast<std::uint32_t>(all.size());
    if (room < all.size())
        return RESULT_BUFFER_TOO_SMALL;
    std::copy(all.begin(), all.end(), infos);
    return RESULT_OK;
}
