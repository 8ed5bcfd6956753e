// Single cases around the converter, beside those of the table: full disks, names, what is no file,
// very many files; and what exactly is told of a read error.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>

#include "converter_run.h"
#include "recordings.h"

namespace {

class Surroundings : public testing::Test {
 protected:
  Surroundings() { small_recording().save(scratch / "rec.gzd"); }

  Outcome run(const Words& arguments) const {
    return run_converter(arguments, {.directory = scratch.path()});
  }
  [[nodiscard]] bool has(const std::string& name) const {
    return std::filesystem::exists(scratch / name);
  }

  ScratchDirectory scratch;
};

void expect_failure(const Outcome& outcome, const std::string& message) {
  EXPECT_EQ(outcome.signal, 0) << outcome.output;
  EXPECT_EQ(outcome.status, 1) << outcome.output;
  EXPECT_NE(outcome.output.find(message), std::string::npos) << outcome.output;
}

// ---- full disks ---------------------------------------------------------------------------------

TEST_F(Surroundings, FullDevice) {
  std::filesystem::create_symlink("/dev/full", scratch / "rec.asc");
  expect_failure(run({"-y", "rec.gzd"}), "Failed write to output file rec.asc \n");
  EXPECT_TRUE(std::filesystem::is_symlink(scratch / "rec.asc")) << "only regular files are removed";
  EXPECT_EQ(run({"-y", "rec.gzd", "-q"}).output,
            "Failed write to output file rec.asc \ngzdconv: rec.asc: No space left on device\n");
}

// A directory of its own file system of 64 KiB, for as long as this lives.
class SmallDisk {
 public:
  explicit SmallDisk(std::filesystem::path path) : path_(std::move(path)) {
    std::filesystem::create_directory(path_);
    mounted_ = mount("tmpfs", path_.c_str(), "tmpfs", 0, "size=64k") == 0;
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;
  ~SmallDisk() {
    if (mounted_) umount2(path_.c_str(), MNT_DETACH);
  }
  [[nodiscard]] bool is_mounted() const { return mounted_; }

 private:
  std::filesystem::path path_;
  bool mounted_;
};

TEST_F(Surroundings, FullDisk) {
  const SmallDisk disk(scratch / "disk");
  if (!disk.is_mounted()) GTEST_SKIP() << "mounting needs root";
  small_recording(9000).save(scratch / "long.gzd");
  expect_failure(run({"-p", "disk", "long.gzd", "rec.gzd"}),
                 "Failed write to output file disk/long.asc \n"
                 "gzdconv: disk/long.asc: No space left on device\n");
  EXPECT_FALSE(has("disk/long.asc"));
  EXPECT_TRUE(has("disk/rec.asc")) << "the run goes on, and the disk has room again";
}

// Compressed recordings are inflated where TMPDIR says; a failure there names that place.
TEST_F(Surroundings, TemporaryDirectoryFullOrMissing) {
  gzdsynth::GzdWriter writer = small_recording(20000);
  writer.magic(gzdsynth::Magic::FalcZip).save(scratch / "zip.gzd");
  const auto run_with = [this](const std::string& directory) {
    return run_converter({"-q", "zip.gzd"}, {.directory = scratch.path(), .in_child = [&directory] {
                                               setenv("TMPDIR", directory.c_str(), 1);
                                             }});
  };
  expect_failure(run_with("none"),
                 "Failed to create temp file \n\nCould not process zip.gzd \n"
                 "gzdconv: none: No such file or directory\n");
  EXPECT_TRUE(run_with("").ended_well());
  std::filesystem::remove(scratch / "zip.asc");
  const SmallDisk disk(scratch / "disk");
  if (!disk.is_mounted()) GTEST_SKIP() << "mounting needs root";
  expect_failure(run_with("disk"), "\ngzdconv: disk: No space left on device\n");
  EXPECT_FALSE(has("zip.asc"));
}

// ---- read errors --------------------------------------------------------------------------------

// They fail the file; under -failsafe what was read before them stays.
TEST_F(Surroundings, ReadErrors) {
  small_recording(90000).save(scratch / "long.gzd");
  std::ofstream(scratch / "tq_messages.log")
      << "10 TRACKER_TIME 1 1000.0\n15 a\n20 b\n2000 Quit logger\n";
  struct Case {
    const char* call;
    const char* named;
  };
  for (const Case& c : {Case{"fread", "long.gzd"}, {"fgets", "tq_messages.log"}}) {
    for (const bool failsafe : {false, true}) {
      const Outcome outcome = run_converter(
          {"-q", "-y", "-logmsg", failsafe ? "-failsafe" : "-v", "long.gzd"},
          {.directory = scratch.path(),
           .faults = {{"FAULT_CALL", c.call}, {"FAULT_AT", "3"}, {"FAULT_EVERY", "1"}}});
      expect_failure(outcome, std::string("gzdconv: ") + c.named + ": Input/output error\n");
      EXPECT_EQ(has("long.asc"), failsafe) << c.call;
      std::filesystem::remove(scratch / "long.asc");
    }
  }
}

// ---- outputs that cannot be ---------------------------------------------------------------------

TEST_F(Surroundings, DirectoryInPlaceOfAFile) {
  std::filesystem::create_directory(scratch / "dir.gzd");
  expect_failure(run({"dir.gzd"}), "Could not process dir.gzd \n");
  std::filesystem::create_directory(scratch / "rec.asc");
  expect_failure(run({"-y", "rec.gzd"}), "Could not open output file rec.asc \n");
  EXPECT_TRUE(std::filesystem::is_directory(scratch / "rec.asc"));
}

TEST_F(Surroundings, DevicesAndPipesAreNoRecordings) {
  ASSERT_EQ(mkfifo((scratch / "pipe.gzd").c_str(), 0600), 0);
  std::filesystem::create_symlink("/dev/zero", scratch / "zero.gzd");
  expect_failure(run({"pipe.gzd"}), "Could not process pipe.gzd \n");
  expect_failure(run({"zero.gzd"}), "Could not process zero.gzd \n");
}

// ---- names --------------------------------------------------------------------------------------

TEST_F(Surroundings, NamesWithBlanksAndUtf8) {
  const std::string name = "Aufnahme \xC3\xA4\xE2\x82\xAC %s %n 1";
  small_recording().save(scratch / (name + ".gzd"));
  const Outcome outcome = run({name + ".gzd"});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  const std::string text = content_of(scratch / (name + ".asc"));
  EXPECT_TRUE(text.starts_with("** CONVERTED FROM " + name + ".gzd using"));
}

TEST_F(Surroundings, NamesThatAreTooLong) {
  const std::string component(300, 'n');
  expect_failure(run({component + ".gzd"}), "Could not process " + component + ".gzd \n");

  const std::string path(5000, 'n');  // longer than any line of the library's log
  const Outcome refused = run({path + ".gzd"});
  expect_failure(refused, "Could not process " + path + ".gzd \n");
  EXPECT_NE(refused.output.find("nnn\nFile Could not be opened!\n"), std::string::npos);
}

// ---- numbers ------------------------------------------------------------------------------------

// Ten thousand files in one run, with twenty descriptors and no more memory than for a hundred.
TEST_F(Surroundings, TenThousandFiles) {
  small_recording(2).save(scratch / "rec.gzd");
  gzdsynth::GzdWriter packed = small_recording(2);
  packed.magic(gzdsynth::Magic::FalcZip).save(scratch / "zip.gzd");
  const auto run_many = [this](int count) {
    Words words = {"-q", "-y"};
    for (int i = 0; i < count; ++i) words.push_back(i % 10 == 0 ? "zip.gzd" : "rec.gzd");
    const auto few_descriptors = [] {
      const rlimit twenty{20, 20};
      setrlimit(RLIMIT_NOFILE, &twenty);
    };
    return run_converter(words, {.directory = scratch.path(), .in_child = few_descriptors});
  };
  const Outcome hundred = run_many(100);
  const Outcome all = run_many(10000);
  EXPECT_EQ(all.status, 0) << all.output.substr(0, 1000);
  constexpr long words_kib = 10000 * 64 / 1024;  // the names themselves
  EXPECT_LT(all.peak_kib, hundred.peak_kib + words_kib + 1024);
}

}  // namespace
