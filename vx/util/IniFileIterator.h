#pragma once

#include "vx/String.h"

#include <cstddef>
#include <vector>

namespace vx::util {

class IniFile;

/// Names from an INI file, as they were at construction. It can be copied and assigned.
class VX_API IniFileIteratorBase {
public:
    virtual ~IniFileIteratorBase();
    /// The name that was passed to the constructor.
    virtual String getSetName() const;
    /// Throws IniFileException of TYPE_NO_MORE_ELEMENTS at the end.
    virtual String next() = 0;
    virtual bool hasNext() const = 0;

protected:
    explicit IniFileIteratorBase(const char16_t* set);
    IniFileIteratorBase(const IniFileIteratorBase&) = default;
    IniFileIteratorBase& operator=(const IniFileIteratorBase&) = default;

    /// Shared by both iterators.
    String take(const std::vector<String>& names, std::size_t& position) const;

private:
    String m_set;
};

/// The sets in their order. For an empty name these are all sets, with their complete names. Otherwise they are the
/// sets below `set`: the next part of each name, without repetition. A missing set has none.
class VX_API IniFileSetIterator : public IniFileIteratorBase {
public:
    IniFileSetIterator(IniFile& file, const char16_t* set);
    ~IniFileSetIterator() override;
    IniFileSetIterator(const IniFileSetIterator&) = default;
    IniFileSetIterator& operator=(const IniFileSetIterator&) = default;

    // IniFileIteratorBase
    String next() override;
    bool hasNext() const override;

private:
    std::vector<String> m_names;
    std::size_t m_position = 0;
};

/// The keys of a set in their order. Throws IniFileException of TYPE_NO_SUCH_SET if neither the set nor one below it
/// exists.
class VX_API IniFileKeyIterator : public IniFileIteratorBase {
public:
    IniFileKeyIterator(IniFile& file, const char16_t* set);
    ~IniFileKeyIterator() override;
    IniFileKeyIterator(const IniFileKeyIterator&) = default;
    IniFileKeyIterator& operator=(const IniFileKeyIterator&) = default;

    // IniFileIteratorBase
    String next() override;
    bool hasNext() const override;

private:
    std::vector<String> m_names;
    std::size_t m_position = 0;
};

} // namespace vx::util
