#include "vx/util/IniFileIterator.h"

#include "vx/Occasion.h"
#include "vx/sync/ScopedWait.h"
#include "vx/util/IniFile.h"
#include "vx/util/IniFileException.h"

#include <set>

namespace vx::util {

IniFileIteratorBase::IniFileIteratorBase(const char16_t* set)
    : m_set(set)
{
}

IniFileIteratorBase::~IniFileIteratorBase() = default;

String IniFileIteratorBase::getSetName() const
{
    return m_set;
}

String IniFileIteratorBase::take(const std::vector<String>& names, std::size_t& position) const
{
    if (position == names.size())
        throwDuring(
            u"get", u"a name past the last one", IniFileException(IniFileException::TYPE_NO_MORE_ELEMENTS, String()));
    return names[position++];
}

IniFileSetIterator::IniFileSetIterator(IniFile& file, const char16_t* set)
    : IniFileIteratorBase(set)
{
    constexpr char16_t SEPARATOR = u'\\';

    const sync::ScopedWait lock(file.m_lock.get());
    file.checkAndUpdate();
    const String above(set);
    if (above.isEmpty()) {
        m_names = file.ListSets();
        return;
    }
    const String prefix = above + u"\\";
    std::set<String, IniNameLess> children; // equal parts need not be adjacent: "a\b", "a\b c", "a\b\d"
    for (const auto& [name, keys] : file.m_sets) {
        if (name.startsWith(prefix, true))
            children.insert(name.substring(prefix.getLength(), name.indexOf(SEPARATOR, prefix.getLength())));
    }
    m_names.assign(children.begin(), children.end());
}

IniFileSetIterator::~IniFileSetIterator() = default;

String IniFileSetIterator::next()
{
    return take(m_names, m_position);
}

bool IniFileSetIterator::hasNext() const
{
    return m_position < m_names.size();
}

IniFileKeyIterator::IniFileKeyIterator(IniFile& file, const char16_t* set)
    : IniFileIteratorBase(set)
{
    const sync::ScopedWait lock(file.m_lock.get());
    file.checkAndUpdate();
    const String name(set);
    if (file.m_sets.contains(name))
        m_names = file.ListKeys(name);
    else if (!file.SetExists(name))
        throwDuring(
            u"list the keys of", name, IniFileException(IniFileException::TYPE_NO_SUCH_SET, name), RESULT_NOT_FOUND);
}

IniFileKeyIterator::~IniFileKeyIterator() = default;

String IniFileKeyIterator::next()
{
    return take(m_names, m_position);
}

bool IniFileKeyIterator::hasNext() const
{
    return m_position < m_names.size();
}

} // namespace vx::util
