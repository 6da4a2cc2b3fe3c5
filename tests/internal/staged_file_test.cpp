/// Tests of how a save replaces the file of a store: the file is whole at any time and keeps its
/// permissions. It is written in place if its name cannot be given to another file.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zn_datetime.h>
#include <zn_setcfg.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>

#ifdef __linux__
#include <linux/fs.h>
#include <sys/ioctl.h>
#endif

#include "child_status.h"
#include "directory_contents.h"
#include "long_run.h"
#include "own_mounts.h"
#include "resource_limits.h"
#include "stored_xml.h"
#include "temporary_files.h"
#include "unprivileged.h"
#ifdef __linux__
#include "power_cuts.h"
#include "tracee.h"
#endif

namespace {

using zn_lib::Configuration;

using Names = std::set<std::string>;

class StagedFile : public InTemporaryDirectory {
 protected:
  ~StagedFile() override { umask(umaskBefore_); }

 private:
  const mode_t umaskBefore_ = umask(0022);
};

mode_t modeOf(const std::string& name) {
  struct stat status;
  return lstat(name.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// Makes `store`, in config.xml of `directory`, hold one setting besides the stamp.
void fill(Configuration& store, const std::string& directory, const std::string& value) {
  store.path = directory;
  store.set("UPDATE", "DATE", "2024-03-05 14:07:09", "");
  store.set("key", value);
}

bool savesValue(const std::string& directory, const std::string& value) {
  Configuration store;
  fill(store, directory, value);
  const bool result = store.save();
  EXPECT_EQ(store.changed, !result);
  store.changed = false;
  return result;
}

/// Returns the file that a save of this setting writes.
std::string savedXml(const std::string& value) {
  Configuration store;
  fill(store, "", value);
  store.changed = false;
  return xmlOf(store);
}

constexpr uid_t kSomebody = 65533;

/// Gives up the user and the group of root, for good.
void becomeNobody() {
  if (setgid(kNobody) != 0 || !dropPrivileges()) _exit(kCannotPrepare);
}

// ---- Permissions, owner and group

TEST_F(StagedFile, KeepsThePermissionsOfTheFileThatItReplaces) {
  for (const bool backup : {true, false}) {
    for (const mode_t mode : {0600u, 0640u, 0400u, 0644u, 0666u, 0000u, 0777u, 02660u}) {
      writeFile("config.xml", "old");
      ASSERT_EQ(chmod("config.xml", mode), 0);
      Configuration store;
      store.backup = backup;
      store.set("a", "1");
      EXPECT_TRUE(store.save());
      EXPECT_EQ(modeOf("config.xml"), mode) << "with the backup " << backup;
      if (backup) {
        EXPECT_EQ(modeOf("config.xml~"), mode);
      }
      std::filesystem::remove("config.xml");
      std::filesystem::remove("config.xml~");
    }
  }
}

TEST_F(StagedFile, KeepsThePermissionsOfAFileWrittenInPlace) {
  // No longer name is possible beside a name of this length.
  Configuration store("T", std::string(250, 'n'));
  const std::string file = store.getConfigurationFile();
  writeFile(file, "old");
  ASSERT_EQ(chmod(file.c_str(), 0600), 0);
  store.set("a", "1");
  EXPECT_TRUE(store.save());
  EXPECT_EQ(modeOf(file), mode_t{0600});
  EXPECT_EQ(readFile(file + "~"), "old");
  // The new file has the permissions of the target of the link, which may be private.
  std::filesystem::rename(file, "real");
  std::filesystem::create_symlink("real", file);
  store.set("a", "2");
  EXPECT_TRUE(store.save());
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(file)));
  EXPECT_EQ(modeOf(file), mode_t{0600});
}

void expectStatus(const std::string& file, uid_t owner, gid_t group, mode_t permissions) {
  struct stat status;
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, owner);
  EXPECT_EQ(status.st_gid, group);
  EXPECT_EQ(status.st_mode & 07777, permissions);
}

TEST_F(StagedFile, KeepsOwnerAndGroupIfPermitted) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  for (const std::string& name : {std::string("config"), std::string(250, 'n')}) {
    const std::string file = name + ".cfg";
    writeFile(file, "old");
    ASSERT_EQ(chown(file.c_str(), kSomebody, kNobody), 0);
    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    Configuration store("T", name);
    store.set("a", "1");
    EXPECT_TRUE(store.save());
    expectStatus(file, kSomebody, kNobody, 0640);
  }
}

TEST_F(StagedFile, AnotherUsersFileGetsTheGroupOfTheProcess) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  ASSERT_EQ(chmod(".", 0777), 0);
  writeFile("config.xml", "old");
  ASSERT_EQ(chmod("config.xml", 0664), 0);
  const int status = statusOfChild([] {
    becomeNobody();
    EXPECT_TRUE(savesValue("", "new"));
  });
  EXPECT_EQ(status, 0);
  expectStatus("config.xml", kNobody, kNobody, 0664);
}

TEST_F(StagedFile, KeepsAGroupToWhichTheProcessBelongs) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  ASSERT_EQ(chmod(".", 0777), 0);
  writeFile("config.xml", "old");
  ASSERT_EQ(chmod("config.xml", 0660), 0);
  ASSERT_EQ(chown("config.xml", kNobody, kSomebody), 0);
  const int status = statusOfChild([] {
    constexpr gid_t group = kSomebody;
    if (setgroups(1, &group) != 0) _exit(kCannotPrepare);
    becomeNobody();
    EXPECT_TRUE(savesValue("", "new"));
  });
  EXPECT_EQ(status, 0);
  expectStatus("config.xml", kNobody, kSomebody, 0660);
}

// ---- Files that are written in place

/// Bind-mounts `file` onto itself, in the mount namespace of this process.
bool makeMountPoint(const char* file) {
  return unshareMounts() && mount(file, file, nullptr, MS_BIND, nullptr) == 0;
}

TEST_F(StagedFile, AMountPointIsWrittenInPlace) {
  writeFile("config.xml", "old");
  writeFile("config.xml~", "older");
  ASSERT_EQ(chmod("config.xml", 0600), 0);
  const int status = statusOfChild([] {
    if (!makeMountPoint("config.xml")) _exit(kCannotPrepare);
    for (const char* value : {"a longer value", "new"}) {
      EXPECT_TRUE(savesValue("", value));
      EXPECT_EQ(readFile("config.xml"), savedXml(value));
    }
  });
  if (status == kCannotPrepare) GTEST_SKIP() << "nothing can be mounted here";
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
  EXPECT_EQ(readFile("config.xml~"), "older") << "kept, since the file cannot be moved there";
  EXPECT_EQ(namesIn("."), (Names{"config.xml", "config.xml~"}));
  EXPECT_EQ(modeOf("config.xml"), mode_t{0600});
}

TEST_F(StagedFile, ABackupOnAnotherFileSystemIsKept) {
  writeFile("real", "old");
  std::filesystem::create_symlink("real", "config.xml");
  writeFile("config.xml~", "older");
  std::filesystem::create_directory("disk");
  const int status = statusOfChild([] {
    if (!unshareMounts() || mount("none", "disk", "tmpfs", 0, nullptr) != 0) _exit(kCannotPrepare);
    writeFile("disk/backup", "mounted");
    if (mount("disk/backup", "config.xml~", nullptr, MS_BIND, nullptr) != 0) _exit(kCannotPrepare);
    EXPECT_TRUE(savesValue("", "new"));
    EXPECT_EQ(readFile("config.xml~"), "mounted");
  });
  if (status == kCannotPrepare) GTEST_SKIP() << "nothing can be mounted here";
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile("real"), savedXml("new"));
  EXPECT_TRUE(std::filesystem::is_symlink("config.xml"));
}

TEST_F(StagedFile, AnotherUsersFileInAStickyDirectoryIsWrittenInPlace) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  ASSERT_EQ(chmod(".", 01777), 0);
  for (const char* name : {"config.xml", "config.xml~"}) {
    writeFile(name, name);
    ASSERT_EQ(chmod(name, 0666), 0);
    ASSERT_EQ(chown(name, kSomebody, kSomebody), 0);
  }
  const int status = statusOfChild([] {
    becomeNobody();
    EXPECT_TRUE(savesValue("", "new"));
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
  EXPECT_EQ(readFile("config.xml~"), "config.xml~");
  EXPECT_EQ(namesIn("."), (Names{"config.xml", "config.xml~"}));
}

/// Returns a name that a save gives to its new file. Only a save that replaces the file looks for
/// the new files of earlier saves, and removes them.
std::string stagedName(int number) {
  return "config.xml.179000000000000000" + std::to_string(number) + ".zn_udf";
}

TEST_F(StagedFile, AnOwnFileInAStickyDirectoryIsReplaced) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may change its user";
  ASSERT_EQ(chmod(".", 01777), 0);
  const int status = statusOfChild([] {
    becomeNobody();
    EXPECT_TRUE(savesValue("", "old"));
    writeFile(stagedName(0), "torn");
    EXPECT_TRUE(savesValue("", "new"));
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
  EXPECT_EQ(readFile("config.xml~"), savedXml("old"));
  EXPECT_EQ(namesIn("."), (Names{"config.xml", "config.xml~"}));
}

TEST_F(StagedFile, TheOwnerOfAStickyDirectoryReplacesAnotherUsersFile) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  writeFile("config.xml", "old");
  ASSERT_EQ(chmod("config.xml", 0666), 0);
  ASSERT_EQ(chown("config.xml", kSomebody, kSomebody), 0);
  ASSERT_EQ(chown(".", kNobody, kNobody), 0);
  ASSERT_EQ(chmod(".", 01777), 0);
  const int status = statusOfChild([] {
    becomeNobody();
    EXPECT_TRUE(savesValue("", "new"));
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
  struct stat backup;
  ASSERT_EQ(stat("config.xml~", &backup), 0);
  EXPECT_EQ(backup.st_uid, kSomebody) << "the file was not moved but written in place";
}

#ifdef FS_IOC_SETFLAGS
/// Sets an attribute of a file or a directory for the lifetime of the object.
class Attribute {
 public:
  Attribute(const char* name, int attribute) : descriptor_(open(name, O_RDONLY)) {
    isSet = ioctl(descriptor_, FS_IOC_GETFLAGS, &before_) == 0;
    const int flags = before_ | attribute;
    isSet = isSet && ioctl(descriptor_, FS_IOC_SETFLAGS, &flags) == 0;
  }
  ~Attribute() {
    if (isSet) ioctl(descriptor_, FS_IOC_SETFLAGS, &before_);
    close(descriptor_);
  }
  Attribute(const Attribute&) = delete;
  Attribute& operator=(const Attribute&) = delete;

  bool isSet = false;

 private:
  int descriptor_;
  int before_ = 0;
};

TEST_F(StagedFile, AFileInAnAppendOnlyDirectoryIsWrittenInPlace) {
  std::filesystem::create_directory("d");
  writeFile("d/config.xml", "old");
  writeFile("d/config.xml~", "older");
  const Attribute appendOnly("d", FS_APPEND_FL);
  if (!appendOnly.isSet) GTEST_SKIP() << "no directory can be made append-only here";
  EXPECT_TRUE(savesValue("d", "new"));
  EXPECT_EQ(readFile("d/config.xml"), savedXml("new"));
  EXPECT_EQ(readFile("d/config.xml~"), "older");
  EXPECT_EQ(namesIn("d"), (Names{"config.xml", "config.xml~"}));
}

TEST_F(StagedFile, AFirstSaveInAnAppendOnlyDirectorySucceeds) {
  std::filesystem::create_directory("d");
  const Attribute appendOnly("d", FS_APPEND_FL);
  if (!appendOnly.isSet) GTEST_SKIP() << "no directory can be made append-only here";
  EXPECT_TRUE(savesValue("d", "new"));
  EXPECT_EQ(readFile("d/config.xml"), savedXml("new"));
  EXPECT_EQ(namesIn("d"), Names{"config.xml"});
}

TEST_F(StagedFile, AFailedSaveDoesNotChangeTheStore) {
  writeFile("config.xml", "old");
  writeFile("config.xml~", "older");
  const Attribute immutable("config.xml", FS_IMMUTABLE_FL);
  if (!immutable.isSet) GTEST_SKIP() << "no file can be made immutable here";
  for (const bool changed : {false, true}) {
    Configuration store;
    store.set("key", "value");
    store.changed = changed;
    EXPECT_FALSE(store.save());
    EXPECT_EQ(store.changed, changed);
    EXPECT_EQ(store.elements.size(), 1u) << "no stamp";
    EXPECT_FALSE(zn_lib::isUseTime());
    store.changed = false;
  }
  EXPECT_EQ(readFile("config.xml"), "old");
  EXPECT_EQ(readFile("config.xml~"), "older");
  EXPECT_EQ(namesIn("."), (Names{"config.xml", "config.xml~"}));
}
#endif

#ifdef __linux__
bool isLink(const SystemCall& call) {
#ifdef SYS_link
  if (call.number == SYS_link) return true;
#endif
  return call.number == SYS_linkat;
}
#endif

TEST_F(StagedFile, RootCreatesNoLinkInAStickyDirectory) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  // In a container, root may create a link there that it may not remove.
  ASSERT_EQ(chmod(".", 01777), 0);
  ASSERT_EQ(chown(".", kSomebody, kSomebody), 0);
  writeFile("config.xml", "old");
  ASSERT_EQ(chown("config.xml", kNobody, kNobody), 0);
  int links = 0;
#ifdef __linux__
  const auto look = [&](const SystemCall& call) { links += isLink(call) ? 1 : 0; };
  CallTracer tracer;
  const auto work = [] { savesValue("", "new"); };
  if (!tracer.run(work, look)) GTEST_SKIP() << "no process can be traced here";
#endif
  EXPECT_EQ(links, 0);
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
  EXPECT_EQ(readFile("config.xml~"), "old");
}

TEST_F(StagedFile, ADanglingLinkIsKept) {
  std::filesystem::create_symlink("target", "config.xml");
  EXPECT_TRUE(savesValue("", "new"));
  EXPECT_EQ(std::filesystem::read_symlink("config.xml"), "target");
  EXPECT_EQ(readFile("target"), savedXml("new"));
  EXPECT_EQ(namesIn("."), (Names{"config.xml", "target"}));
  std::filesystem::remove("config.xml");
  std::filesystem::create_symlink("missing/target", "config.xml");
  EXPECT_FALSE(savesValue("", "new"));
  EXPECT_TRUE(std::filesystem::is_symlink("config.xml"));
}

TEST_F(StagedFile, AReadOnlyFileIsKeptWithoutABackup) {
  ASSERT_EQ(chmod(".", 0777), 0);
  writeFile("config.xml", "old");
  ASSERT_EQ(chmod("config.xml", 0444), 0);
  const auto saves = [](bool backup) {
    Configuration store;
    fill(store, "", "new");
    store.backup = backup;
    const bool isSaved = store.save();
    store.changed = false;
    return isSaved ? 1 : 0;
  };
  EXPECT_EQ(withoutPrivileges([&] { return saves(false); }), 0);
  EXPECT_EQ(readFile("config.xml"), "old");
  EXPECT_EQ(withoutPrivileges([&] { return saves(true); }), 1) << "it is moved to the backup";
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
  EXPECT_EQ(readFile("config.xml~"), "old");
  EXPECT_EQ(modeOf("config.xml"), mode_t{0444});
}

TEST_F(StagedFile, TheFileIsKeptIfNoDescriptorIsLeft) {
  for (const std::string& name : {std::string("config"), std::string(250, 'n')}) {
    Configuration store("T", name);
    const std::string file = store.getConfigurationFile();
    writeFile(file, "old");
    store.set("a", "1");
    {
      const DescriptorLimit none(0);
      EXPECT_FALSE(store.save());
    }
    EXPECT_EQ(readFile(file), "old");
    store.changed = false;
  }
}

TEST_F(StagedFile, AFileThatIsItsOwnBackupKeepsItsText) {
  // A save that is killed between its two renames leaves one file with both names.
  writeFile("config.xml", "old");
  std::filesystem::create_hard_link("config.xml", "config.xml~");
  EXPECT_TRUE(savesValue("", "new"));
  EXPECT_EQ(readFile("config.xml~"), "old");
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
  EXPECT_EQ(namesIn("."), (Names{"config.xml", "config.xml~"}));

  Configuration store("T", std::string(250, 'n'));
  const std::string file = store.getConfigurationFile();
  writeFile(file, "old");
  std::filesystem::create_hard_link(file, file + "~");
  store.set("a", "1");
  EXPECT_TRUE(store.save());
  EXPECT_EQ(readFile(file + "~"), "old") << "in place";
  EXPECT_NE(readFile(file), "old");
}

#ifdef __linux__

TEST_F(StagedFile, NoFileGrantsMoreAccessThanTheOriginal) {
  writeFile("config.xml", "old");
  ASSERT_EQ(chmod("config.xml", 0600), 0);
  int looks = 0;
  const auto look = [&](const SystemCall&) {
    ++looks;
    for (const std::string& name : namesIn(".")) {
      EXPECT_EQ(modeOf(name) & ~mode_t{0600}, mode_t{0}) << name;
    }
  };
  CallTracer tracer;
  const auto work = [] { savesValue("", "new"); };
  if (!tracer.run(work, look)) GTEST_SKIP() << "no process can be traced here";
  EXPECT_GT(looks, 8);
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
}

// ---- Power cuts

TEST_F(StagedFile, IsWholeAfterAPowerCut) {
  const Names whole = {savedXml("old"), savedXml("first"), savedXml("second")};
  const struct {
    const char* what;
    Contents files;
    bool backup;
  } cases[] = {
      {"no file", {}, true},
      {"a file", {{"config.xml", savedXml("old")}}, true},
      {"a file and its backup", {{"config.xml", savedXml("old")}, {"config.xml~", "older"}}, true},
      {"without a backup", {{"config.xml", savedXml("old")}}, false},
  };
  int all = 0;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    makeContents(c.files);
    const auto states = statesAfterPowerCuts([&] {
      for (const char* value : {"first", "second"}) {
        Configuration store;
        fill(store, "", value);
        store.backup = c.backup;
        store.save();
      }
    });
    if (!states) GTEST_SKIP() << "no process can be traced here";
    ASSERT_FALSE(HasFailure());
    ASSERT_EQ(readFile("config.xml"), savedXml("second"));

    int torn = 0, lost = 0;
    for (const auto& state : *states) {
      const auto isGood = [&](const char* name) {
        const auto file = state.find(name);
        return file == state.end() ? c.files.empty() : whole.count(file->second) == 1;
      };
      torn += isGood("config.xml") ? 0 : 1;
      lost += isGood("config.xml") || isGood("config.xml~") ? 0 : 1;
    }
    EXPECT_GT(states->size(), 5u);
    EXPECT_EQ(torn, 0) << "of " << states->size() << " states the file is torn";
    EXPECT_EQ(lost, 0) << "of " << states->size() << " neither the file nor its backup is whole";
    all += static_cast<int>(states->size());
    std::printf("%-22s %3zu states\n", c.what, states->size());
  }
  RecordProperty("power_cut_cases", static_cast<int>(std::size(cases)));
  RecordProperty("power_cut_states", all);
}

#endif

// ---- Files that killed saves leave

TEST_F(StagedFile, TheNextSaveRemovesWhatAKilledSaveLeft) {
  for (const std::string place : {"", "sub/"}) {
    std::filesystem::create_directory("sub");
    writeFile(place + "config.xml", "old");
    for (int i = 0; i < 3; ++i) {
      writeFile(place + stagedName(i), "torn");
      std::filesystem::create_hard_link(place + "config.xml", place + stagedName(i) + "~");
    }
    ASSERT_EQ(chmod((place + stagedName(1)).c_str(), 0400), 0);
    EXPECT_TRUE(savesValue(place, "new"));
    EXPECT_EQ(namesIn("./" + place), (place.empty() ? Names{"config.xml", "config.xml~", "sub"}
                                                    : Names{"config.xml", "config.xml~"}));
  }
}

TEST_F(StagedFile, RootReplacesAnotherUsersFileInAnotherUsersDirectory) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may give files away";
  writeFile("config.xml", "old");
  writeFile(stagedName(0), "torn");
  ASSERT_EQ(chown("config.xml", kSomebody, kSomebody), 0);
  ASSERT_EQ(chown(".", kNobody, kNobody), 0);
  EXPECT_TRUE(savesValue("", "new"));
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
  EXPECT_EQ(namesIn("."), (Names{"config.xml", "config.xml~"}));
}

TEST_F(StagedFile, AFirstSaveInAnotherUsersStickyDirectoryIsStaged) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may change its user";
  ASSERT_EQ(chown(".", kSomebody, kSomebody), 0);
  ASSERT_EQ(chmod(".", 01777), 0);
  const int status = statusOfChild([] {
    becomeNobody();
    writeFile(stagedName(0), "torn");
    EXPECT_TRUE(savesValue("", "new"));
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(readFile("config.xml"), savedXml("new"));
  EXPECT_EQ(namesIn("."), (Names{"config.xml"}));
}

TEST_F(StagedFile, LeftoversThatCannotBeWrittenOrReadAreRemovedOrKept) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may change its user";
  ASSERT_EQ(chmod(".", 0777), 0);
  const int status = statusOfChild([] {
    becomeNobody();
    for (int i = 0; i < 2; ++i) writeFile(stagedName(i), "torn");
    EXPECT_EQ(chmod(stagedName(0).c_str(), 0400), 0);
    EXPECT_EQ(chmod(stagedName(1).c_str(), 0), 0);
    EXPECT_TRUE(savesValue("", "new"));
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(namesIn("."), (Names{"config.xml", stagedName(1)})) << "nobody can lock the last file";
}

TEST_F(StagedFile, UnrelatedFilesAreKept) {
  const Names others = {
      "config.xml.1790",       "config.xml.1790~",      "config.xml.zn_udf",
      "config.xml..zn_udf",    "config.xml.old.zn_udf", "config.xml.2024-03-05",
      "config.xml.1-0.zn_udf", "other.xml.1790.zn_udf", "xconfig.xml.1790.zn_udf"};
  std::filesystem::create_directory(stagedName(0));
  writeFile(stagedName(0) + "~", "another's");
  ASSERT_EQ(mkfifo(stagedName(1).c_str(), 0600), 0);
  for (const std::string& name : others) writeFile(name, "another's");
  EXPECT_TRUE(savesValue("", "new"));
  for (const std::string& name : others) EXPECT_EQ(readFile(name), "another's") << name;
  EXPECT_EQ(readFile(stagedName(0) + "~"), "another's") << "beside a directory";
  EXPECT_TRUE(std::filesystem::is_fifo(stagedName(1)));
}

TEST_F(StagedFile, TheFileOfARunningSaveIsKept) {
  const std::string name = stagedName(0);
  const int running = open(name.c_str(), O_WRONLY | O_CREAT, 0600);
  ASSERT_EQ(flock(running, LOCK_EX), 0);
  EXPECT_TRUE(savesValue("", "new"));
  EXPECT_TRUE(isThere(name));
  close(running);
  EXPECT_TRUE(savesValue("", "new"));
  EXPECT_FALSE(isThere(name));
}

constexpr std::size_t kValueLength = 20000;

/// Saves repeatedly, each time another value of the same length.
[[noreturn]] void saveRepeatedly(int saver, int saves) {
  for (int i = 0; i < saves; ++i) {
    Configuration store;
    fill(store, "", std::string(kValueLength, static_cast<char>('a' + (saver + i) % 26)));
    if (!store.save()) _exit(1);
  }
  _exit(0);
}

/// Returns the files that these saves write.
Names textsOfSavers() {
  Names texts;
  for (char c = 'a'; c <= 'z'; ++c) texts.insert(savedXml(std::string(kValueLength, c)));
  return texts;
}

TEST_F(StagedFile, IsWholeWhileFourProcessesSaveAndAreKilled) {
  constexpr int savers = 4;
  const int saves = isLongRun() ? 10000 : 300;
  const Names whole = textsOfSavers();
  ASSERT_TRUE(savesValue("", std::string(kValueLength, 'a')));
  std::fflush(nullptr);
  std::map<pid_t, int> running;
  for (int saver = 0; saver < savers; ++saver) {
    const pid_t child = fork();
    if (child == 0) saveRepeatedly(saver, saves);
    running[child] = saver;
  }
  std::mt19937 random(20240305);
  const int mostKills = saves / 5;
  int kills = 0, reads = 0, torn = 0;
  while (!running.empty()) {
    torn += whole.count(readFile("config.xml")) == 1 ? 0 : 1;
    ++reads;
    if (kills < mostKills && random() % 10 == 0) {
      const auto victim = static_cast<std::ptrdiff_t>(random() % running.size());
      kills += kill(std::next(running.begin(), victim)->first, SIGKILL) == 0 ? 1 : 0;
    }
    int status = 0;
    const pid_t ended = waitpid(-1, &status, WNOHANG);
    if (ended <= 0) continue;
    const int saver = running.at(ended);
    running.erase(ended);
    if (WIFEXITED(status)) {
      EXPECT_EQ(WEXITSTATUS(status), 0) << "a save failed";
      continue;
    }
    const pid_t next = fork();
    if (next == 0) saveRepeatedly(saver, saves);
    running[next] = saver;
  }
  EXPECT_EQ(torn, 0) << "of " << reads << " reads";
  EXPECT_GT(kills, 0);
  const std::size_t left = namesIn(".").size();
  EXPECT_TRUE(savesValue("", "last"));
  EXPECT_EQ(namesIn("."), (Names{"config.xml", "config.xml~"}));
  EXPECT_EQ(whole.count(readFile("config.xml~")), 1u);
  std::printf("%d saves each, %d reads, %d kills, %zu files left\n", saves, reads, kills, left - 2);
  RecordProperty("saves_each", saves);
  RecordProperty("reads", reads);
  RecordProperty("kills", kills);
}

}  // namespace
