#include "inspect/mount_table.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace {

TEST(FilesystemTypes, AreMarkedByTheFirstField) {
    const FsTypeTable types = parse_filesystem_types(
        "nodev\tproc\n\text4\nnodev\tnfs4\textra\nNODEV\tfuse\nnodev\n\njunk");
    EXPECT_EQ(types,
              (FsTypeTable{{"proc", true}, {"ext4", false}, {"nfs4", true}, {"fuse", false}}));
}

TEST(MountTable, DecodesEscapesAndSkipsWhatIsNoEntry) {
    const std::string path = testing::TempDir() + "inspect_mount_table";
    std::ofstream(path) << "# a comment\n\n/dev/sda1 /srv/my\\040data ext4 rw,quota 0 0\n"
                        << "LABEL=x\tnone\tswap\nshort\n/dev/" << std::string(500000, 'x')
                        << " /long ext4 rw 0 0\nlast /last nfs ro";
    std::vector<MountEntry> entries;
    ASSERT_EQ(read_mount_table(path.c_str(), entries), 0);
    std::remove(path.c_str());
    ASSERT_EQ(entries.size(), 5U);
    EXPECT_EQ(entries[0].mount_point, "/srv/my data");
    EXPECT_EQ(entries[0].options, "rw,quota");
    EXPECT_EQ(entries[1].type + entries[1].options, "swap");
    EXPECT_EQ(entries[2].type, "");
    EXPECT_EQ(entries[4].type, "nfs");
}

}  // namespace
