#include "pixels/machine.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sched.h>
#include <sys/resource.h>

#include <gtest/gtest.h>

#include "support/paths.h"

// What the kernel's files tell, from files of the test's own.

namespace tessarine::tests {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t mebi = uint64_t{1} << 20;

class Machine : public testing::Test {
  protected:
    void file(const std::string& path, const std::string& text) const {
        const std::string whole = root + path;
        fs::create_directories(fs::path(whole).parent_path());
        std::ofstream(whole) << text;
    }
    static int cores() {
        cpu_set_t set;
        return ::sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 0;
    }

    const ScratchFolder scratch;
    const std::string root = scratch / "root";
};

TEST_F(Machine, WithoutGroupsAllProcessorsOfTheProcessCount) {
    EXPECT_EQ(availableCores(root), cores());
    EXPECT_GE(availableCores(), 1);
    EXPECT_LE(availableCores(), cores());
}

TEST_F(Machine, AProcessThatIsHeldToOneProcessorHasOne) {
    cpu_set_t before;
    ASSERT_EQ(::sched_getaffinity(0, sizeof before, &before), 0);
    cpu_set_t one;
    CPU_ZERO(&one);
    for (int i = 0; i < CPU_SETSIZE && CPU_COUNT(&one) == 0; ++i)
        if (CPU_ISSET(i, &before)) CPU_SET(i, &one);
    ASSERT_EQ(::sched_setaffinity(0, sizeof one, &one), 0);
    EXPECT_EQ(availableCores(root), 1);
    ASSERT_EQ(::sched_setaffinity(0, sizeof before, &before), 0);
}

TEST_F(Machine, AShareOfTimeIsRoundedUp) {
    if (cores() < 2) GTEST_SKIP() << "one processor alone";
    file("/proc/self/cgroup", "0::/box/inner\n");
    file("/sys/fs/cgroup/box/inner/cpu.max", "100001 100000\n");
    EXPECT_EQ(availableCores(root), 2);
    file("/sys/fs/cgroup/box/inner/cpu.max", "100000 100000\n");
    EXPECT_EQ(availableCores(root), 1);
    file("/sys/fs/cgroup/box/inner/cpu.max", "1000 100000\n");
    EXPECT_EQ(availableCores(root), 1);
    file("/sys/fs/cgroup/box/inner/cpu.max", "max 100000\n");
    EXPECT_EQ(availableCores(root), cores());
}

TEST_F(Machine, AGroupAroundTheProcessLimitsItToo) {
    file("/proc/self/cgroup", "0::/box/inner\n");
    file("/sys/fs/cgroup/box/inner/cpu.max", "max 100000\n");
    file("/sys/fs/cgroup/box/cpu.max", "50000 100000\n");
    EXPECT_EQ(availableCores(root), 1);
}

TEST_F(Machine, GroupsOfTheFirstVersionCount) {
    file("/proc/self/cgroup", "5:memory:/box\n4:cpu,cpuacct:/box\n0::/\n");
    file("/sys/fs/cgroup/cpu,cpuacct/box/cpu.cfs_quota_us", "100000\n");
    file("/sys/fs/cgroup/cpu,cpuacct/box/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(availableCores(root), 1);
    file("/sys/fs/cgroup/cpu,cpuacct/box/cpu.cfs_quota_us", "-1\n");
    EXPECT_EQ(availableCores(root), cores());
    file("/sys/fs/cgroup/cpu/box/cpu.cfs_quota_us", "90000\n");
    file("/sys/fs/cgroup/cpu/box/cpu.cfs_period_us", "100000\n");
    EXPECT_EQ(availableCores(root), 1) << "by the controller's own name";
}

TEST_F(Machine, MemoryIsWhatTheMachineHasAvailable) {
    file("/proc/meminfo", "MemTotal:  4194304 kB\nMemFree: 1024 kB\nMemAvailable:  2097152 kB\n");
    EXPECT_EQ(availableMemory(root), 2048 * mebi);
}

TEST_F(Machine, MemoryOfAGroupIsWhatItMayTakeYet) {
    file("/proc/meminfo", "MemAvailable:  2097152 kB\n");
    file("/proc/self/cgroup", "0::/box\n");
    file("/sys/fs/cgroup/box/memory.max", std::to_string(512 * mebi) + "\n");
    file("/sys/fs/cgroup/box/memory.current", std::to_string(200 * mebi) + "\n");
    EXPECT_EQ(availableMemory(root), 312 * mebi);
    EXPECT_EQ(wholeMemory(root), 512 * mebi);
    // Files that were read fill a group up, and make room where it is needed.
    file("/sys/fs/cgroup/box/memory.stat",
         "anon 1\ninactive_file " + std::to_string(50 * mebi) + "\nactive_file 7\n");
    EXPECT_EQ(availableMemory(root), 362 * mebi);
    file("/sys/fs/cgroup/box/memory.current", std::to_string(900 * mebi) + "\n");
    EXPECT_EQ(availableMemory(root), 0U);
    file("/sys/fs/cgroup/box/memory.max", "max\n");
    EXPECT_EQ(availableMemory(root), 2048 * mebi);
}

TEST_F(Machine, MemoryOfAGroupOfTheFirstVersion) {
    file("/proc/meminfo", "MemAvailable:  2097152 kB\n");
    file("/proc/self/cgroup", "4:memory:/box/inner\n0::/\n");
    file("/sys/fs/cgroup/memory/box/memory.limit_in_bytes", std::to_string(300 * mebi) + "\n");
    file("/sys/fs/cgroup/memory/box/memory.usage_in_bytes", std::to_string(100 * mebi) + "\n");
    EXPECT_EQ(availableMemory(root), 200 * mebi);
    EXPECT_EQ(wholeMemory(root), 300 * mebi);
}

TEST_F(Machine, FilesWithoutSenseAreLeftOut) {
    file("/proc/self/cgroup", "nonsense\n0::\n\n7:cpu\n");
    file("/proc/meminfo", "MemAvailable: much\n");
    file("/sys/fs/cgroup/cpu.max", "a lot\n");
    file("/sys/fs/cgroup/memory.max", "-5\n");
    EXPECT_EQ(availableCores(root), cores());
    EXPECT_GT(availableMemory(root), 0U);
    EXPECT_GT(wholeMemory(root), 0U);
}

TEST_F(Machine, AsManyFilesAsAllowedMayBeOpen) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit few{std::min<rlim_t>(before.rlim_max, 64), before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    allowManyFiles();
    rlimit after{};
    ::getrlimit(RLIMIT_NOFILE, &after);
    EXPECT_EQ(after.rlim_cur, before.rlim_max);
    ::setrlimit(RLIMIT_NOFILE, &before);
}

}  // namespace
}  // namespace tessarine::tests
