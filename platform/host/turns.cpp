// Turns by numbered tickets. A thread that waits is woken by its own ticket's bit, so that usually no other one wakes.
#include "turns.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>

namespace host {

namespace {

using Word = std::atomic<std::uint32_t>;
static_assert(Word::is_always_lock_free && sizeof(Word) == sizeof(std::uint32_t));

std::uint32_t bitOf(std::uint32_t ticket) {
    return std::uint32_t{1} << ticket % 32;
}

/// Sleeps while the word is `seen`. May return earlier.
void sleepOn(Word& word, std::uint32_t seen, std::uint32_t ticket) {
    syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, seen, nullptr, nullptr, bitOf(ticket));
}

void wake(Word& word, std::uint32_t ticket) {
    syscall(SYS_futex, &word, FUTEX_WAKE_BITSET_PRIVATE, INT_MAX, nullptr, nullptr, bitOf(ticket));
}

}  // namespace

void Turns::take() {
    const std::uint32_t mine = tickets.fetch_add(1);
    for (std::uint32_t seen = current.load(); seen != mine; seen = current.load()) {
        sleepOn(current, seen, mine);
    }
    holder.store(std::this_thread::get_id(), std::memory_order_relaxed);
}

void Turns::pass() {
    holder.store(std::thread::id(), std::memory_order_relaxed);
    const std::uint32_t next = current.load(std::memory_order_relaxed) + 1;
    // In one order with a thread that takes a ticket and then looks whose turn it is: one of the two sees the other.
    current.store(next);
    if (tickets.load() != next) {
        wake(current, next);
    }
}

}  // namespace host
