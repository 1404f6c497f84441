#include "View.h"

#include "Output.h"
#include "Reader.h"
#include "Summary.h"
#include "common/Failure.h"
#include "common/Program.h"
#include "common/Progress.h"

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cstring>
#include <deque>
#include <langinfo.h>
#include <limits>
#include <memory>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vxview {

using namespace vxtools;

namespace {

using Kind = Record::Kind;

constexpr Message WAITS {u"vxview.waits", "there is no such file yet; waits for it"};

/// One log with its next piece.
struct Log {
    std::unique_ptr<Reader> reader;
    std::string path;
    std::string told; ///< why it cannot be read; empty if it can
    bool hasPiece = false;
    Moment time
        = std::numeric_limits<Moment>::min(); ///< of the piece; one without a time has that of the piece before it
};

std::size_t terminalWidth()
{
    constexpr std::size_t USUAL = 80;
    winsize size {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : USUAL;
}

class Viewer {
public:
    Viewer(const Options& options, Messages& messages)
        : m_options(options)
        , m_messages(messages)
        , m_printer(options.printer)
        , m_summary(options.summaryBy)
        , m_output(options.hasPager && options.task == Options::Task::PRINT)
        , m_isSorted(options.merges && options.logs.size() > 1 && options.task == Options::Task::PRINT)
    {
    }

    Outcome run()
    {
        try {
            show();
        } catch (const OutputClosed&) {
            // The reader of the output, such as "head", has seen enough.
        }
        return m_outcome;
    }

private:
    void show()
    {
        m_output.write(m_options.task == Options::Task::PRINT ? m_printer.getHead() : "");
        openAll();
        Progress progress(m_options.printer.isTerminal && m_options.task == Options::Task::PRINT ? 0 : sizeOfAll());
        while (Log* const log = nextLog()) {
            take(*log);
            if (++m_pieces % 1024 == 0)
                progress.update(positionOfAll());
        }
        for (const std::string& text : m_kept)
            m_output.write(text);
        m_kept.clear();
        m_isFollowing = true;
        if (m_options.access.follows)
            follow();
        finish();
    }

    void openAll()
    {
        for (const std::string& path : m_options.logs) {
            guarded([&] {
                auto reader = std::make_unique<Reader>(path, m_options.access, m_options.filter.getNeedle());
                if (reader->getSource().isMissing())
                    complain("vxview", m_messages.say(Failure(path, WAITS()).text()));
                m_logs.push_back({std::move(reader), path, {}});
            });
        }
        if (m_options.last && m_options.filter.isEmpty() && m_logs.size() == 1)
            skipToLast(*m_logs.front().reader);
        for (Log& log : m_logs)
            fetch(log);
    }

    /// To begin with an entry far before the last ones that are wanted: so that a large log need not be read whole.
    void skipToLast(Reader& reader)
    {
        constexpr std::int64_t USUAL_SIZE = 4096, MOST = 256 * 1024 * 1024;
        const std::int64_t size = std::max<std::int64_t>(*m_options.last, 16) * USUAL_SIZE;
        if (size < MOST)
            reader.skipToEnd(size);
    }

    /// Calls `work` and reports a log that cannot be read.
    template <class Work>
    bool guarded(const Work& work)
    {
        std::string told;
        return guarded(work, told);
    }

    /// The same, but not once more while the reason is the one in `told`.
    template <class Work>
    bool guarded(const Work& work, std::string& told)
    {
        try {
            work();
            told.clear();
            return true;
        } catch (const Failure& failure) {
            m_outcome.hasFailed = true;
            const std::string text = m_messages.say(failure.text());
            if (std::exchange(told, text) != text)
                complain("vxview", text);
            return false;
        }
    }

    /// Gets the next piece of a log that passes.
    void fetch(Log& log)
    {
        log.hasPiece = false;
        const auto findNext = [&] {
            while (!log.hasPiece && log.reader->next())
                log.hasPiece = m_options.filter.lets(log.reader->getRecord()) && isPiece(log.reader->getRecord());
        };
        const bool isGood = guarded(findNext, log.told);
        if (!isGood)
            log.hasPiece = false;
        if (m_isSorted && log.hasPiece)
            log.time = std::max(log.time, timeOf(log.reader->getRecord()).value_or(log.time));
    }

    static bool isPiece(Record& record) { return record.getKind() != Kind::MARKUP; }

    Log* nextLog()
    {
        Log* next = nullptr;
        for (Log& log : m_logs) {
            if (log.hasPiece && (next == nullptr || (m_isSorted && log.time < next->time)))
                next = &log;
        }
        return next;
    }

    void take(Log& log)
    {
        Record& record = log.reader->getRecord();
        m_outcome.hasFound = true;
        switch (m_options.task) {
        case Options::Task::COUNT:
            ++m_count;
            break;
        case Options::Task::SUMMARY:
            m_summary.add(record);
            break;
        default:
            m_text.clear();
            m_printer.print(
                record, m_options.logs.size() > 1 ? std::string_view(log.path) : std::string_view(), m_text);
            keepOrWrite();
        }
        fetch(log);
    }

    void keepOrWrite()
    {
        if (!m_options.last || m_isFollowing) {
            m_output.write(m_text);
            return;
        }
        m_kept.push_back(m_text);
        if (m_kept.size() > static_cast<std::size_t>(*m_options.last))
            m_kept.pop_front();
    }

    /// Looks for more until the program is ended. Entries are written as they come, those of several logs not merged.
    void follow()
    {
        constexpr std::chrono::milliseconds PERIOD {100};
        while (std::ranges::any_of(m_logs, [](const Log& log) { return log.reader->mayGrow(); })) {
            for (Log& log : m_logs) {
                for (fetch(log); log.hasPiece;)
                    take(log);
            }
            m_output.flush();
            std::this_thread::sleep_for(PERIOD);
        }
    }

    void finish()
    {
        if (m_options.task == Options::Task::COUNT)
            m_output.write(std::to_string(m_count) + '\n');
        else if (m_options.task == Options::Task::SUMMARY)
            m_output.write(m_summary.print(std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0, terminalWidth()));
        else
            m_output.write(m_printer.getFoot());
        m_output.flush();
    }

    std::int64_t sizeOfAll() const
    {
        std::int64_t sum = 0;
        for (const Log& log : m_logs)
            sum += std::max<std::int64_t>(log.reader->getSource().getSize(), 0);
        return sum;
    }

    std::int64_t positionOfAll() const
    {
        std::int64_t sum = 0;
        for (const Log& log : m_logs)
            sum += log.reader->getSource().getPosition();
        return sum;
    }

    const Options& m_options;
    Messages& m_messages;
    Printer m_printer;
    Summary m_summary;
    Output m_output;
    const bool m_isSorted;
    std::vector<Log> m_logs;
    std::deque<std::string> m_kept; ///< the last entries, already printed
    std::string m_text;
    std::int64_t m_count = 0;
    std::uint64_t m_pieces = 0;
    bool m_isFollowing = false;
    Outcome m_outcome;
};

} // namespace

Outcome view(const Options& options, Messages& messages)
{
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_TIME, "");
    return Viewer(options, messages).run();
}

} // namespace vxview
