// The stand-in for <windows.h>: what it says of the process's pages.
#include <sys/mman.h>

#include "platform/faults.h"
#include "support/platform_test.h"

namespace {

constexpr std::size_t page = 4096;
constexpr std::size_t page_count = 6;

// Two pages to write to, two without access and one to read, between two that lie apart from all others.
struct pages_test : platform_test {
  char* first = nullptr;

  void SetUp() override {
    platform_test::SetUp();
    void* const all = mmap(nullptr, page_count * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(all, MAP_FAILED);
    first = static_cast<char*>(all);
    ASSERT_EQ(mprotect(first, 2 * page, PROT_READ | PROT_WRITE), 0);
    ASSERT_EQ(mprotect(first + 4 * page, page, PROT_READ), 0);
  }
  void TearDown() override {
    munmap(first, page_count * page);
    platform_test::TearDown();
  }
};

struct region {
  std::ptrdiff_t first;  // pages behind the first
  std::size_t pages;
  DWORD state;
  DWORD protect;
  bool operator==(const region&) const = default;
};

void PrintTo(const region& shown, std::ostream* out) {
  *out << shown.pages << " from " << shown.first << ", state " << shown.state << ", protection " << shown.protect;
}

TEST_F(pages_test, a_region_goes_on_as_far_as_its_protection) {
  const auto found = [this](std::size_t offset) {
    MEMORY_BASIC_INFORMATION told;
    EXPECT_EQ(VirtualQuery(first + offset, &told, sizeof told), sizeof told);
    EXPECT_EQ(told.RegionSize % page, 0u);
    return region{(static_cast<char*>(told.BaseAddress) - first) / static_cast<std::ptrdiff_t>(page),
                  told.RegionSize / page, told.State, told.Protect};
  };
  EXPECT_EQ(found(0), (region{0, 2, MEM_COMMIT, PAGE_READWRITE}));
  EXPECT_EQ(found(page - 1), (region{0, 2, MEM_COMMIT, PAGE_READWRITE}));
  EXPECT_EQ(found(page), (region{1, 1, MEM_COMMIT, PAGE_READWRITE}));
  EXPECT_EQ(found(2 * page + 7), (region{2, 2, MEM_COMMIT, PAGE_NOACCESS}));
  EXPECT_EQ(found(4 * page), (region{4, 1, MEM_COMMIT, PAGE_READONLY}));
  munmap(first + 2 * page, 2 * page);
  EXPECT_EQ(found(2 * page), (region{2, 2, MEM_FREE, PAGE_NOACCESS}));
  EXPECT_EQ(found(3 * page + 1), (region{3, 1, MEM_FREE, PAGE_NOACCESS}));
}

TEST_F(pages_test, nothing_is_told_where_there_is_no_room_or_a_failure_is_ordered) {
  MEMORY_BASIC_INFORMATION told = {};
  EXPECT_EQ(VirtualQuery(first, &told, sizeof told - 1), 0u);
  platform::fail_call("VirtualQuery", 1);
  EXPECT_EQ(VirtualQuery(first, &told, sizeof told), 0u);
  EXPECT_EQ(told.RegionSize, 0u);
  EXPECT_EQ(VirtualQuery(first, &told, sizeof told), sizeof told);
}

}  // namespace
