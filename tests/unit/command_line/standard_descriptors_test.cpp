// A program whose standard input, output and error are closed at its start.
#include "command_line/standard_descriptors.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "in_a_child.h"

namespace {

bool failsWithBadDescriptor(ssize_t result) {
    return result < 0 && errno == EBADF;
}

}  // namespace

TEST(ClosedStandardDescriptors, AreGivenToNothingElse) {
    enum Finding { allRight, opensOne, reads, writes };
    EXPECT_EQ(inAChild([] {
                  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
                      close(descriptor);
                  }
                  command_line::keepStandardDescriptors();
                  char byte = 0;
                  const int next = open("/dev/zero", O_RDWR);
                  return next <= STDERR_FILENO                                   ? opensOne
                         : !failsWithBadDescriptor(read(STDIN_FILENO, &byte, 1)) ? reads
                         : !failsWithBadDescriptor(write(STDOUT_FILENO, &byte, 1)) ||
                                 !failsWithBadDescriptor(write(STDERR_FILENO, &byte, 1))
                             ? writes
                             : allRight;
              }),
              allRight);
}

TEST(OpenStandardDescriptors, StayAsTheyAre) {
    EXPECT_EQ(inAChild([] {
                  struct stat before {};
                  struct stat after {};
                  close(STDIN_FILENO);
                  fstat(STDERR_FILENO, &before);
                  command_line::keepStandardDescriptors();
                  fstat(STDERR_FILENO, &after);
                  return before.st_ino == after.st_ino && before.st_dev == after.st_dev ? 0 : 1;
              }),
              0);
}
