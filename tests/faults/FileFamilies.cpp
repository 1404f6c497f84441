#include "common/Failure.h"
#include "common/Messages.h"
#include "tests/faults/Families.h"
#include "vxconv/Conversion.h"
#include "vxconv/Options.h"
#include "vxsys/File.h"

#include <unistd.h>

namespace {

using namespace vx;
using namespace vx::io;
using util::RegistryKey;

constexpr std::string_view ENTRY = "An entry of a few bytes\n";

String pathIn(const Scratch& place, const char* name = "file")
{
    return String(place.full(name));
}

void write(OutputStream& stream, std::string_view bytes)
{
    stream.write(bytes.data(), static_cast<std::int32_t>(bytes.size()));
}

/// Opens an existing file, writes to it and closes it again.
Family opening(const char* name, unsigned int mode, After after)
{
    return {name,
        [mode](const Scratch& place) {
            put(place / "file", "What was there before\n");
            return Operation {[path = pathIn(place), mode] {
                FileOutputStream stream(path, mode);
                write(stream, ENTRY);
                stream.flush();
            }};
        },
        after};
}

/// `work` on an object over an open stream of an existing file.
template <class Make, class Work>
Family over(const char* name, unsigned int mode, After after, Make make, Work work)
{
    return {name,
        [=](const Scratch& place) {
            put(place / "file", "What was there before\n");
            const Reference<FileOutputStream> file(new FileOutputStream(pathIn(place), mode));
            return Operation {[work, made = make(file.get())] { work(*made); }};
        },
        after};
}

/// What `read` reads from a file.
template <class Read>
Family reading(const char* name, std::string content, Read read)
{
    return {name, [=](const Scratch& place) {
                put(place / "file", content);
                return on(
                    std::make_shared<std::string>(),
                    [=, path = pathIn(place)](std::string& seen) { seen = read(path); },
                    [](const std::string& seen) { return seen; });
            }};
}

/// Replaces a file by another one, whether there is one or not.
Family replacing(const char* name, bool isThere)
{
    return {name, [isThere](const Scratch& place) {
                if (isThere)
                    put(place / "file", "What was there before\n");
                return Operation {[path = pathIn(place)] {
                    throwIfFailed(VXFileReplace(
                        path.getData(), ENTRY.data(), static_cast<std::int64_t>(ENTRY.size()), 0644, nullptr));
                }};
            }};
}

/// `work` on an INI file with some sets, in which another process has written since it was read.
Family changing(const char* name, void (*work)(util::IniFile& file))
{
    return {name, [work](const Scratch& place) {
                constexpr const char* SETS = "[set]\nkey=value\n[set\\below]\nkey=value\n[third]\nkey=value\n";
                put(place / "file", SETS);
                const auto file = std::make_shared<util::IniFile>(
                    pathIn(place).getData(), ("faults" + std::to_string(::getpid())).c_str(), 1);
                put(place / "file", std::string(SETS) + "new=from another process\n");
                return Operation {[file, work] {
                    work(*file);
                    throwIfFailed(file->GetWriteResult());
                }};
            }};
}

/// `work` on a registry with two keys, in a store in the folder.
Family registry(const char* name, void (*work)(const RegistryKey& key))
{
    return {name, [work](const Scratch& place) {
                const auto store = std::make_shared<ScopedVariable>("VXSYS4_REGISTRY", (place / ".store").c_str());
                const auto key = std::make_shared<RegistryKey>(u"VX_HKEY_USER\\Software\\Tests");
                key->setValue(u"text", u"before");
                key->setValue(u"number", 1);
                key->getSubkey(u"Below").setValue(u"the default");
                return on(
                    key, [store, work](const RegistryKey& one) { work(one); },
                    [store](const RegistryKey& one) {
                        std::string seen;
                        for (const auto values = one.getValueIterator(); values->hasNext();) {
                            const String value = *values->next();
                            seen += value.toUtf8() + ' ';
                            if (one.getValueType(value) == VX_REG_STRING)
                                seen += one.getValueString(value).toUtf8() + ' ';
                        }
                        for (const auto keys = one.getSubkeyIterator(); keys->hasNext();)
                            seen += keys->next()->getKey().toUtf8() + ' ';
                        return seen;
                    });
            }};
}

/// The work of the tool that converts a file.
Family converting(const char* name, vxconv::Options options)
{
    return {name, [options](const Scratch& place) {
                put(place / "from", "Some text, \xC3\xA4\nof two lines");
                put(place / "to", "What was there before\n");
                return Operation {[from = (place / "from").string(), to = (place / "to").string(), options] {
                    try {
                        vxtools::Messages messages;
                        vxconv::convertFile(options, from, to, messages);
                    } catch (const vxtools::Failure& failure) {
                        throw Exception(String(failure.what()));
                    }
                }};
            }};
}

} // namespace

std::vector<Family> fileFamilies()
{
    constexpr unsigned int ATEND = FileOutputStream::ATEND;
    constexpr unsigned int APPEND = FileOutputStream::APPEND;
    constexpr unsigned int TRUNC = FileOutputStream::TRUNC;
    constexpr unsigned int KEEPCLOSED = FileOutputStream::KEEPCLOSED;
    constexpr unsigned int LOCK = FileOutputStream::LOCK;
    const auto itself = [](FileOutputStream* file) { return Reference<FileOutputStream>(file); };
    const auto writeEntry = [](OutputStream& stream) { write(stream, ENTRY); };
    const auto writer = [](const char16_t* encoding) {
        return [encoding](FileOutputStream* file) {
            return Reference<OutputStreamWriter>(new OutputStreamWriter(file, encoding, 1000));
        };
    };
    const auto writeText = [](Writer& target) {
        target.write(u"An entry of a log, \u00E4\n");
        target.flush();
    };
    return {
        opening("FileOverwrite", 0, After::ANYTHING),
        opening("FileTruncate", TRUNC, After::PART),
        opening("FileAtEnd", ATEND, After::PART),
        opening("FileAppend", APPEND, After::OLD_STATE),
        opening("FileAppendKeptClosed", APPEND | KEEPCLOSED, After::OLD_STATE),
        opening("FileLockedAtEnd", ATEND | LOCK, After::OLD_STATE),
        over("FileAppendAgain", APPEND, After::OLD_STATE, itself, writeEntry),
        over("FileAppendKeptClosedAgain", APPEND | KEEPCLOSED, After::OLD_STATE, itself, writeEntry),
        over("FileLockedAgain", ATEND | LOCK, After::OLD_STATE, itself, writeEntry),
        over("FileTruncateAgain", TRUNC, After::PART, itself, writeEntry),
        over("FileReopen", APPEND, After::OLD_STATE, itself,
            [](FileOutputStream& stream) {
                stream.close();
                stream.open();
                stream.wait();
                try {
                    write(stream, ENTRY);
                } catch (...) {
                    stream.signal();
                    throw;
                }
                stream.signal();
            }),
        over("WriterUtf8OverFile", APPEND, After::OLD_STATE, writer(u"UTF-8"), writeText),
        over("WriterUtf16OverFile", APPEND, After::OLD_STATE, writer(u"UTF-16LE"), writeText),
        over("WriterAmp7OverFile", APPEND, After::OLD_STATE, writer(u"AMP-7"), writeText),
        over(
            "BufferedWriterOverFile", APPEND, After::ANYTHING,
            [](FileOutputStream* file) {
                return Reference<BufferedWriter>(
                    new BufferedWriter(new OutputStreamWriter(file, u"CP1252", 1000), 100));
            },
            writeText),
        over(
            "DataOverFile", TRUNC, After::PART,
            [](FileOutputStream* file) {
                return Reference<DataOutputStream>(new DataOutputStream(new BufferedOutputStream(file, 100)));
            },
            [](DataOutputStream& stream) {
                stream.writeInt64(0x4142434445464748);
                stream.writeDouble(0.5);
                stream.flush();
            }),

        reading("ReadBytes", "some bytes of a file",
            [](const String& path) {
                const Reference<BufferedInputStream> stream(new BufferedInputStream(new FileInputStream(path), 16));
                std::string seen;
                for (int byte = stream->read(); byte >= 0; byte = stream->read())
                    seen += static_cast<char>(byte);
                stream->close();
                return seen;
            }),
        reading("ReadData", "ABCDEFGHIJKL",
            [](const String& path) {
                const Reference<DataInputStream> stream(new DataInputStream(new FileInputStream(path)));
                return std::to_string(stream->readInt64()) + ' ' + std::to_string(stream->readInt32());
            }),
        reading("ReadLines", "One line,\nanother \xC3\xA4\xF0\x9F\x98\x80\nand the last",
            [](const String& path) {
                const Reference<InputStreamReader> decoder(
                    new InputStreamReader(new FileInputStream(path), u"UTF-8", 16));
                const Reference<BufferedReader> reader(new BufferedReader(decoder.get(), 16));
                std::string seen;
                for (String line; reader->readLine(line) >= 0;)
                    seen += line.toUtf8() + '|';
                return seen;
            }),

        replacing("FileReplace", true),
        replacing("FileReplaceNew", false),
        reading("IniRead", "[set]\nkey=value\n",
            [](const String& path) {
                util::IniFile file(path.getData(), nullptr, 1);
                char16_t value[20];
                throwIfFailed(file.GetValue(u"set", u"key", value, 20));
                return String(value).toUtf8();
            }),

        changing(
            "IniChange", [](util::IniFile& file) { throwIfFailed(file.AddKey(u"other", u"key", u"value", true)); }),
        changing("IniDelete", [](util::IniFile& file) { throwIfFailed(file.DeleteSet(u"set")); }),

        converting("Convert", {.from = "UTF-8", .to = "UTF-16LE"}),
        converting("ConvertLines", {.from = "UTF-8", .to = "CP1252", .lines = true}),

        registry("RegistrySet", [](const RegistryKey& key) { key.setValue(u"text", u"after"); }),
        registry("RegistrySetNew", [](const RegistryKey& key) { key.setValue(u"new", u"value"); }),
        registry("RegistryDelete", [](const RegistryKey& key) { key.deleteValue(u"text"); }),
        registry(
            "RegistryMakeKeys", [](const RegistryKey& key) { key.getSubkey(u"New\\Deep").setValue(u"text", u"deep"); }),
        registry("RegistryRemoveKey", [](const RegistryKey& key) { key.getSubkey(u"Below").remove(); }),
        registry("RegistryRead",
            [](const RegistryKey& key) {
                if (key.getValueUINT32(u"number") != 1 || key.getSubkey(u"Below").getValueString(u"") != u"the default")
                    throw std::logic_error("read something else");
            }),
    };
}
