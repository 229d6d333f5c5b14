// What a program says while nobody reads it.
#include "command_line/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "in_a_child.h"

namespace {

/// A pipe in place of the standard output, in a process of its own.
struct PipedOutput {
    PipedOutput() {
        if (pipe(ends) != 0 || dup2(ends[1], STDOUT_FILENO) < 0) {
            _exit(2);
        }
        fcntl(ends[0], F_SETFL, O_NONBLOCK);
    }
    std::string taken() const {
        std::string bytes(std::size_t{1} << 20U, '\0');
        const ssize_t count = read(ends[0], bytes.data(), bytes.size());
        bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return bytes;
    }
    int ends[2];
};

}  // namespace

TEST(ALineThatIsSaid, IsLostWhereNobodyReads) {
    EXPECT_EQ(inAChild([] {
                  const PipedOutput output;
                  const std::string line(1000, 'x');
                  constexpr int kMoreThanAPipeHolds = 200;
                  for (int count = 0; count < kMoreThanAPipeHolds; ++count) {
                      command_line::say(line);
                  }
                  const std::string kept = output.taken();
                  command_line::say("after it");
                  return kept.find(line + "\n" + line) == 0 && output.taken() == "after it\n" ? 0 : 1;
              }),
              0);
}

TEST(ALineThatIsSaid, IsLostWhereTheReaderHasGone) {
    EXPECT_EQ(inAChild([] {
                  const PipedOutput output;
                  close(output.ends[0]);
                  command_line::say("nobody hears");
                  return std::ferror(stdout) == 0 ? 0 : 1;
              }),
              0);
}

TEST(ALineThatIsSaid, MayBeLongerThanAPipesPiece) {
    EXPECT_EQ(inAChild([] {
                  const PipedOutput output;
                  const std::string line(10000, 'x');
                  command_line::say(line);
                  return output.taken() == line + "\n" ? 0 : 1;
              }),
              0);
}
