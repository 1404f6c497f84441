#include "Clients.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <sstream>

namespace vxlogd {

namespace {

constexpr std::size_t ID_LENGTH = 32;
constexpr char DIGITS[] = "0123456789abcdef";
constexpr std::size_t MOST_CLIENTS = 10'000;
constexpr std::chrono::hours MEMORY(1);
constexpr std::chrono::minutes BETWEEN_LOOKS(1);

} // namespace

bool Clients::isId(std::string_view id)
{
    return id.size() == ID_LENGTH && id.find_first_not_of(DIGITS) == id.npos;
}

std::string Clients::newId()
{
    std::random_device random;
    std::uniform_int_distribution<std::size_t> digit(0, 15);
    std::string id(ID_LENGTH, '0');
    std::ranges::generate(id, [&] { return DIGITS[digit(random)]; });
    return id;
}

std::shared_ptr<Progress> Clients::find(
    std::string_view id, const std::shared_ptr<Waker>& waker, std::uint64_t connection)
{
    const std::lock_guard lock(m_lock);
    const Clock::time_point now = Clock::now();
    if (m_clients.size() >= MOST_CLIENTS || now - m_lastLook >= BETWEEN_LOOKS)
        forgetOld(now);
    const auto [client, isNew] = m_clients.try_emplace(std::string(id));
    if (isNew) {
        try {
            client->second.progress = std::make_shared<Progress>(waker, connection);
        } catch (...) {
            m_clients.erase(client);
            throw;
        }
    }
    client->second.lastSeen = now;
    return client->second.progress;
}

std::string Clients::save()
{
    std::ostringstream words;
    words.imbue(std::locale::classic());
    const std::lock_guard lock(m_lock);
    for (const auto& [id, client] : m_clients) {
        words << id << ' ';
        client.progress->save(words);
        words << '\n';
    }
    return words.str();
}

bool Clients::restore(const std::string& text)
{
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string id;
        if (!(words >> id) || !isId(id) || !find(id, nullptr, 0)->restore(words))
            return false;
    }
    return true;
}

void Clients::forgetOld(Clock::time_point now)
{
    m_lastLook = now;
    for (auto client = m_clients.begin(); client != m_clients.end();) {
        if (client->second.progress.use_count() > 1) // it has a connection
            client->second.lastSeen = now;
        client = now - client->second.lastSeen >= MEMORY ? m_clients.erase(client) : std::next(client);
    }
    if (m_clients.size() < MOST_CLIENTS)
        return;
    const auto oldest = std::ranges::min_element(m_clients, {}, [](const auto& each) { return each.second.lastSeen; });
    m_clients.erase(oldest); // even if it has a connection, which keeps its progress
}

} // namespace vxlogd
