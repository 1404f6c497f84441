#include "vx/net/FilePath.h"

#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "tests/vxsys/Scratch.h"

#include <unistd.h>

namespace vx::net {
namespace {

/// Server, volume, path and the number of the mount type.
std::string partsOf(const FilePath& path)
{
    return path.getServer().toUtf8() + "|" + path.getVolume().toUtf8() + "|" + path.getPath().toUtf8() + "|"
        + std::to_string(path.getMountType());
}

std::string hostName()
{
    char name[256] = {};
    EXPECT_EQ(::gethostname(name, sizeof name), 0);
    return name;
}

TEST(NetFilePath, TakesUncNamesApart)
{
    struct {
        const char16_t* path;
        const char* parts;
        const char16_t* unc;
    } cases[] = {
        {u"\\\\srv\\vol\\a\\b", "srv|vol|a\\b|1", u"\\\\srv\\vol\\a\\b"},
        {u"//srv/vol/a//b/../c", "srv|vol|a\\c|1", u"\\\\srv\\vol\\a\\c"},
        {u"\\\\srv\\vol", "srv|vol||1", u"\\\\srv\\vol\\"},
        {u"\\\\srv\\vol:\\a", "srv|vol|a|1", u"\\\\srv\\vol\\a"},
    };
    for (const auto& row : cases) {
        const FilePath path(row.path);
        EXPECT_EQ(partsOf(path), row.parts);
        EXPECT_EQ(path.getUNCPath(), row.unc);
        EXPECT_FALSE(path.isLocal());
        EXPECT_THROW(path.getNetwarePath(), ResultException);
    }
    for (const char16_t* path : {u"\\\\srv\\v:l\\a", u"\\\\s:v\\vol\\a", u"\\\\srv\\vol\\a:", u"ab:c", u"\\\\srv"})
        EXPECT_THROW(FilePath {path}, InvalidPathException) << String(path);
}

TEST(NetFilePath, GoesByTheMountTable)
{
    const Scratch scratch;
    put(scratch / "mounts",
        "disk / ext4 rw 0 0\n"
        "proc /mnt/hidden nfs rw 0 0\n"
        "host:/export /mnt/nfs nfs4 rw 0 0\n"
        "host:/ /mnt/nfs/root nfs rw 0 0\n"
        "//srv/vol: /mnt/share\\040one cifs rw 0 0\n"
        "//srv/vol/sub /mnt/sm\303\266b smb3 rw 0 0\n"
        "NW/user /mnt/ncp ncpfs rw 0 0\n"
        "tmp /mnt/hidden tmpfs rw 0 0\n"
        "nowhere /mnt/bad1 nfs rw 0 0\n"
        "srv /mnt/bad2 cifs rw 0 0\n"
        "srv /mnt/bad3 ncpfs rw 0 0\n"
        "//srv/ /mnt/bad5 cifs rw 0 0\n"
        ":/x /mnt/bad6 nfs rw 0 0\n");
    const ScopedVariable table("VXSYS4_MOUNTS", (scratch / "mounts").c_str());
    const std::string local = hostName() + "|C$|";
    std::filesystem::current_path("/usr");
    struct {
        const char16_t* path;
        std::string parts;
    } const cases[] = {
        {u"C:\\a\\b", local + "a\\b|0"},
        {u"c:/", local + "|0"},
        {u"\\a\\b\\", local + "a\\b\\|0"},
        {u"a\\b", local + "usr\\a\\b|0"},
        {u"C:\\a\\..\\..\\b", local + "b|0"},
        {u"C:\\mnt\\nfs", "host||/export|2"},
        {u"C:\\mnt\\nfs\\a\\b", "host||/export/a/b|2"},
        {u"C:\\mnt\\nfs\\root\\a", "host||/a|2"},
        {u"C:\\mnt\\nfsx\\a", local + "mnt\\nfsx\\a|0"},
        {u"C:\\mnt\\hidden\\a", local + "mnt\\hidden\\a|0"},
        {u"C:\\mnt\\share one", "srv|vol||1"},
        {u"\\mnt\\share one\\a\\b", "srv|vol|a\\b|1"},
        {u"..\\mnt\\sm\u00F6b\\x.y", "srv|vol\\sub|x.y|1"},
        {u"C:\\mnt\\ncp\\a", "NW|UNKNOWN|a|1"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(partsOf(FilePath(row.path)), row.parts) << String(row.path);
    EXPECT_EQ(FilePath(u"C:\\mnt\\share one\\a").getUNCPath(), u"\\\\srv\\vol\\a");

    const std::pair<const char16_t*, const char*> faults[] = {{u"C:\\mnt\\bad1\\a", "Invalid NFS syntax."},
        {u"C:\\mnt\\bad2\\a", "Invalid UNC syntax."}, {u"C:\\mnt\\bad3\\a", "Invalid NCP syntax."},
        {u"C:\\mnt\\bad5\\a", "No volume name specified."}, {u"C:\\mnt\\bad6\\a", "No server name specified."},
        {u"C:\\mnt\\nfs\\a", "NFS cannot be represented by UNC"}};
    for (const auto& [path, message] : faults)
        EXPECT_EQ(saidBy<InvalidPathException>([&, wrong = path] { FilePath(wrong).getUNCPath(); }), message);
}

TEST(NetFilePath, AsksForTheHostOnce)
{
    std::string seen[4];
    inThreads(4, [&](int index) { seen[index] = FilePath(u"C:\\proc\\a").getServer().toUtf8(); });
    for (const std::string& name : seen)
        EXPECT_EQ(name, hostName());
}

} // namespace
} // namespace vx::net
