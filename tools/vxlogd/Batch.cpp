#include "Batch.h"

#include <utility>

namespace vxlogd {

Batch::Batch(std::shared_ptr<Progress> progress, std::string peer, std::shared_ptr<const Form> form, std::string client,
    bool awaits)
    : m_progress(std::move(progress))
    , m_peer(std::move(peer))
    , m_form(form != nullptr && form->hasClient() == !client.empty() ? std::move(form) : nullptr)
    , m_client(std::move(client))
    , m_awaits(awaits)
{
}

void Batch::add(std::uint64_t line, std::size_t bytes, int level, std::string_view text)
{
    const std::size_t textsBefore = m_texts.size(), restsBefore = m_rests.size();
    try {
        m_texts += text;
        bool isPrinted = false;
        if (m_form != nullptr) {
            const Fields fields {.sequence = 0,
                .level = level,
                .time = m_time.get(),
                .peer = m_peer,
                .text = text,
                .client = m_client,
                .line = static_cast<std::int64_t>(line)};
            isPrinted = m_form->appendRest(m_rests, fields, m_timeText);
            if (!isPrinted)
                m_rests.resize(restsBefore);
        }
        m_lines.push_back({bytesBefore(m_lines.size()) + bytes, m_texts.size(), m_rests.size(), level, isPrinted});
    } catch (...) {
        m_texts.resize(textsBefore);
        m_rests.resize(restsBefore);
        throw;
    }
    if (m_lines.size() == 1)
        m_firstLine = line;
}

bool Batch::print(std::size_t index, const Form* form, Block& block) const
{
    const Line& line = m_lines[index];
    if (!line.isPrinted || form != m_form.get())
        return false;
    form->appendHead(block, m_firstSequence + static_cast<std::int64_t>(index));
    const std::size_t begin = index > 0 ? m_lines[index - 1].restEnd : 0;
    block.append(std::string_view(m_rests).substr(begin, line.restEnd - begin));
    return true;
}

Fields Batch::getFields(std::size_t index) const
{
    const std::size_t begin = index > 0 ? m_lines[index - 1].textEnd : 0;
    return {.sequence = m_firstSequence + static_cast<std::int64_t>(index),
        .level = m_lines[index].level,
        .time = m_time.get(),
        .peer = m_peer,
        .text = std::string_view(m_texts).substr(begin, m_lines[index].textEnd - begin),
        .client = m_client,
        .line = static_cast<std::int64_t>(m_firstLine + index)};
}

vx::Reference<vx::log::LogEntry> Batch::createEntry(std::size_t index) const
{
    return vxlogd::createEntry(getFields(index));
}

} // namespace vxlogd
