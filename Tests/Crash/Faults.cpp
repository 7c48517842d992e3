#include "Crash/Faults.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>

namespace tallyfoot::testing {

namespace {

constexpr std::size_t page = 65536;

void executeIllegalInstruction() {
#if defined(__x86_64__) || defined(__i386__)
    __asm__ volatile("ud2");
#elif defined(__aarch64__)
    __asm__ volatile("udf #0");
#else
    ::raise(SIGILL);
#endif
}

void divideByZero() {
#if defined(__x86_64__) || defined(__i386__)
    __asm__ volatile("xorl %%ecx, %%ecx\n\tmovl $1, %%eax\n\tcltd\n\tidivl %%ecx" ::: "eax", "ecx", "edx", "cc");
#else
    ::raise(SIGFPE); // the processor does not mind
#endif
}

void readBeyondTheMappedFile() {
    std::string path = "/tmp/tallyfoot-XXXXXX";
    const int file = ::mkstemp(path.data());
    ::unlink(path.c_str());
    (void)::ftruncate(file, page);
    auto* memory = static_cast<volatile char*>(::mmap(nullptr, page, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0));
    (void)::ftruncate(file, 0);
    *memory = 1;
}

void writeToBrokenPipe() {
    std::array<int, 2> ends{};
    (void)::pipe(ends.data());
    ::close(ends[0]);
    (void)::write(ends[1], "x", 1);
}

// Deeper than any stack; each call keeps something that the compiler cannot know to be unused.
int descend(volatile char* above, long depth) {
    volatile char room[4096] = {};
    room[0] = *above;
    return depth == 0 ? room[1] : descend(room, depth - 1) + room[2];
}

} // namespace

void writeToForbiddenMemory() {
    auto* memory = static_cast<volatile char*>(::mmap(nullptr, page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    *memory = 1;
}

void useUpTheStack() {
    volatile char bottom = 0;
    (void)descend(&bottom, 100'000'000);
}

std::vector<Fault> raisedFaults() {
    std::vector<Fault> faults;
    for (const auto& [name, number] : std::vector<std::pair<std::string, int>>{{"SIGABRT", SIGABRT},
                                                                               {"SIGILL", SIGILL},
                                                                               {"SIGSEGV", SIGSEGV},
                                                                               {"SIGFPE", SIGFPE},
                                                                               {"SIGBUS", SIGBUS},
                                                                               {"SIGPIPE", SIGPIPE}})
        faults.push_back({name, number, [number = number] { ::pthread_kill(::pthread_self(), number); }});
    return faults;
}

std::vector<Fault> realFaults() {
    return {{"SIGABRT", SIGABRT, [] { std::abort(); }},   {"SIGILL", SIGILL, executeIllegalInstruction},
            {"SIGSEGV", SIGSEGV, writeToForbiddenMemory}, {"SIGFPE", SIGFPE, divideByZero},
            {"SIGBUS", SIGBUS, readBeyondTheMappedFile},  {"SIGPIPE", SIGPIPE, writeToBrokenPipe}};
}

} // namespace tallyfoot::testing
