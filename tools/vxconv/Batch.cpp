#include "Batch.h"

#include "Conversion.h"
#include "Texts.h"
#include "common/Failure.h"
#include "common/FileName.h"
#include "common/Program.h"

#include <vx/Exception.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <map>
#include <set>
#include <string>
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
            if (!fs::is_directory(path, error))
                add(path, path.filename());
            else if (isTarget(path))
                clash(input, IS_BOTH(), 1);
            else
                addFolder(path, {});
        }
        for (const Job& job : m_jobs) {
            if (!m_options.toFolder.empty() && m_inputs.contains(placeOf(job.output)))
                clash(job.input, IS_AN_INPUT(job.output));
        }
    }

    void run()
    {
        if (m_hasClash) {
            const std::size_t all = m_jobs.size() + m_failed;
            throw Failure(SOME_FILES(all, all), NOT_CONVERTED());
        }
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

    /// After this, nothing is converted: it could destroy an input or an output. `more` files are not among the jobs.
    void clash(const Text& what, const Text& why, std::size_t more = 0)
    {
        m_failed += more;
        m_hasClash = true;
        say(what, why);
    }

    void tellOmission(const Text& what, const Text& why)
    {
        if (m_options.verbose)
            say(what, why);
    }

    void say(const Text& what, const Text& why) { complain("vxconv", m_messages.say(Failure(what, why).text())); }

    bool isTarget(const fs::path& folder) const
    {
        std::error_code ignored;
        return !m_options.toFolder.empty() && fs::equivalent(folder, m_options.toFolder, ignored);
    }

    /// The file that is read or replaced under this name.
    static std::string placeOf(const fs::path& file)
    {
        std::error_code error;
        const fs::path path = followLinks(file.string());
        const fs::path place = fs::weakly_canonical(path, error);
        return error ? path.string() : place.string();
    }

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
        const fs::path output = m_options.toFolder.empty() ? input : fs::path(m_options.toFolder) / name;
        const std::string place = placeOf(input);
        const auto [job, isNew] = m_jobOfOutput.emplace(placeOf(output), m_jobs.size());
        if (isNew) {
            m_inputs.insert(place);
            m_jobs.push_back({input.string(), output.string()});
        } else if (const std::string& other = m_jobs[job->second].input; placeOf(other) != place) {
            clash(input.string(), IS_ANOTHER_OUTPUT(output.string(), other), 1);
        } // otherwise the same file was named twice, which must not be converted twice
    }

    /// All entries are listed before the first conversion creates others. Links to folders are not followed, since they
    /// may form circles. No link is followed in place, since its file may be outside of the folder.
    void addFolder(const fs::path& folder, const fs::path& name)
    {
        std::error_code error;
        if (isTarget(folder))
            return tellOmission(folder.string(), IS_TARGET()); // it has what an earlier run converted
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
             entry.increment(error))
            entries.push_back(*entry);
        if (error)
            refuse(folder.string(), textOfError(error.value()));
        std::sort(entries.begin(), entries.end());
        for (const fs::directory_entry& entry : entries) {
            const fs::path& path = entry.path();
            const bool isLink = entry.is_symlink(error);
            const fs::file_status status = entry.status(error);
            if (isLink && m_options.inPlace)
                tellOmission(path.string(), LINK());
            else if (status.type() == fs::file_type::not_found && isLink)
                refuse(path.string(), LINK_TO_NOTHING());
            else if (!fs::status_known(status))
                refuse(path.string(), textOfError(error.value()));
            else if (fs::is_regular_file(status))
                add(path, name / path.filename());
            else if (!fs::is_directory(status))
                tellOmission(path.string(), NO_FILE());
            else if (isLink)
                tellOmission(path.string(), LINK_TO_FOLDER());
            else
                addFolder(path, name / path.filename());
        }
    }

    const Options& m_options;
    Messages& m_messages;
    std::vector<Job> m_jobs;
    std::set<std::string> m_inputs;
    std::map<std::string, std::size_t> m_jobOfOutput;
    std::size_t m_converted = 0;
    std::size_t m_failed = 0;
    bool m_hasClash = false;
};

} // namespace

void convertAll(const Options& options, Messages& messages)
{
    Batch(options, messages).run();
}

} // namespace vxconv
