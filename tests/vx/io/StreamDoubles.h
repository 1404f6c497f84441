#pragma once

#include "vx/vxlib4.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

struct Bytes {
    using Unit = signed char;
    using Input = vx::io::InputStream;
    using Output = vx::io::OutputStream;
    using FilterInput = vx::io::FilterInputStream;
    using FilterOutput = vx::io::FilterOutputStream;
    using BufferedInput = vx::io::BufferedInputStream;
    using BufferedOutput = vx::io::BufferedOutputStream;
};

struct Chars {
    using Unit = char16_t;
    using Input = vx::io::Reader;
    using Output = vx::io::Writer;
    using FilterInput = vx::io::FilterReader;
    using FilterOutput = vx::io::FilterWriter;
    using BufferedInput = vx::io::BufferedReader;
    using BufferedOutput = vx::io::BufferedWriter;
};

inline vx::Reference<vx::io::ByteArrayInputStream> over(std::string_view bytes)
{
    return new vx::io::ByteArrayInputStream(
        reinterpret_cast<const signed char*>(bytes.data()), static_cast<std::int32_t>(bytes.size()));
}

inline std::string contentOf(const vx::io::ByteArrayOutputStream& out)
{
    return {reinterpret_cast<const char*>(out.getBytes()), static_cast<std::size_t>(out.getSize())};
}

/// Units that differ from their neighbours, the same in each run.
template <class Unit>
std::vector<Unit> unitsFrom(int first, int count)
{
    std::vector<Unit> units;
    for (int value = first; value < first + count; ++value)
        units.push_back(static_cast<Unit>(value));
    return units;
}

/// A source that returns given units piece by piece, and records its calls: "read(16) ".
template <class Family>
class Source : public Family::Input {
public:
    using Unit = typename Family::Unit;

    enum Step { FAIL = -1, NOTHING = 0 }; // any other number: at most that many units

    Source(std::vector<Unit> units, std::string& events, std::vector<int> steps = {})
        : m_units(std::move(units))
        , m_events(events)
        , m_steps(std::move(steps))
    {
    }
    ~Source() override { m_events += "gone "; }

    using Family::Input::read;
    std::int32_t read(Unit* target, std::int32_t length) override
    {
        m_events += "read(" + std::to_string(length) + ") ";
        const int most = m_call < m_steps.size() ? m_steps[m_call] : length;
        ++m_call;
        if (most == FAIL)
            throw vx::io::TimeoutException(u"source failed");
        if (most != NOTHING && m_position == m_units.size())
            return -1;
        const auto count = std::min({most, length, static_cast<int>(m_units.size() - m_position)});
        std::copy_n(m_units.begin() + static_cast<std::ptrdiff_t>(m_position), count, target);
        m_position += static_cast<std::size_t>(count);
        return count;
    }
    std::int32_t available() override
    {
        m_events += "available ";
        return m_available;
    }
    void close() override { m_events += "close "; }

    std::int32_t m_available = 0;

private:
    std::vector<Unit> m_units;
    std::string& m_events;
    std::vector<int> m_steps;
    std::size_t m_call = 0;
    std::size_t m_position = 0;
};

/// A target that records what is written, "write(abc) ", and fails if the test says so.
template <class Family>
class Sink : public Family::Output {
public:
    using Unit = typename Family::Unit;

    explicit Sink(std::string& events)
        : m_events(events)
    {
    }
    ~Sink() override { m_events += "gone "; }

    using Family::Output::write;
    void write(const Unit* units, std::int32_t length) override
    {
        m_events += "write(";
        std::transform(units, units + std::max(length, 0), std::back_inserter(m_events),
            [](Unit unit) { return static_cast<char>(unit); });
        m_events += ") ";
        if (m_fails)
            throw vx::io::TimeoutException(u"sink failed");
    }
    void flush() override { m_events += "flush "; }
    void close() override { m_events += "close "; }

    bool m_fails = false;

private:
    std::string& m_events;
};
