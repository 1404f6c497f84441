#include "Batch.h"

#include "Conversion.h"
#include "Texts.h"
#include "common/Failure.h"
#include "common/Program.h"

#include <vx/Exception.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <vector>

namespace vxconv {

using namespace vxtools;
namespace fs = std::filesystem;

namespace {

struct Job {
    std::string input;
    std::string output;
};

class Batch {
public:
    Batch(const Options& options, Messages& messages)
        : m_options(options)
        , m_messages(messages)
    {
        for (const std::string& input : options.inputs) {
            const fs::path path(input);
            std::error_code error;
            if (fs::is_directory(path, error))
                addFolder(path, {});
            else
                add(path, path.filename());
        }
    }

    void run()
    {
        for (const Job& job : m_jobs) {
            attempt(job.input, [&] {
                if (!m_options.toFolder.empty())
                    createFolder(fs::path(job.output).parent_path());
                convertFile(m_options, job.input, job.output, m_messages);
            });
        }
        if (m_failed > 0)
            throw Failure(SOME_FILES(m_failed, m_failed + m_converted), NOT_CONVERTED());
    }

private:
    template <class Work>
    void attempt(const Text& what, Work work)
    {
        try {
            work();
            ++m_converted;
        } catch (const Failure& failure) {
            report(failure.text());
        } catch (const vx::Exception& failure) {
            report(Failure(what, textOf(failure)).text());
        }
    }

    void report(const Text& failure)
    {
        ++m_failed;
        complain("vxconv", m_messages.say(failure));
    }

    void refuse(const Text& what, const Text& why) { report(Failure(what, why).text()); }

    static void createFolder(const fs::path& folder)
    {
        std::error_code error;
        fs::create_directories(folder, error);
        if (error)
            throw Failure(folder.string(), textOfError(error.value()));
    }

    /// `name` is relative to the target folder.
    void add(const fs::path& input, const fs::path& name)
    {
        if (m_options.toFolder.empty()) {
            m_jobs.push_back({input.string(), input.string()});
            return;
        }
        const fs::path output = fs::path(m_options.toFolder) / name;
        if (m_outputs.insert(output.lexically_normal().string()).second)
            m_jobs.push_back({input.string(), output.string()});
        else
            refuse(input.string(), NAMED_TWICE(m_options.toFolder));
    }

    /// All entries are listed before the first conversion creates others. Links to folders are not followed, since they
    /// may form circles.
    void addFolder(const fs::path& folder, const fs::path& name)
    {
        std::error_code error;
        if (!m_options.toFolder.empty() && fs::equivalent(folder, m_options.toFolder, error))
            return; // what an earlier run has converted
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
             entry.increment(error))
            entries.push_back(*entry);
        if (error)
            refuse(folder.string(), textOfError(error.value()));
        std::sort(entries.begin(), entries.end());
        for (const fs::directory_entry& entry : entries) {
            const fs::path& path = entry.path();
            if (entry.is_directory(error)) {
                if (!entry.is_symlink(error))
                    addFolder(path, name / path.filename());
            } else if (entry.is_regular_file(error)) {
                add(path, name / path.filename());
            }
        }
    }

    const Options& m_options;
    Messages& m_messages;
    std::vector<Job> m_jobs;
    std::set<std::string> m_outputs;
    int m_converted = 0;
    int m_failed = 0;
};

} // namespace

void convertAll(const Options& options, Messages& messages)
{
    Batch(options, messages).run();
}

} // namespace vxconv
