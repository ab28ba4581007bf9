// What a host may rely on whatever happens: failing allocations, several threads, unusual modes, little stack.
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cfenv>
#include <chrono>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>
#ifdef __SSE2__
#include <immintrin.h>
#endif

#include "section_builder.h"
#include "tests/memory_limit.h"

namespace {

#ifdef VQ_SANITIZED
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

// Quadrilaterals, triangles and two bars, of two materials in two groups.
Section sample(double COUPLING = 1, double GMOD = 45) {
    Section s;
    add_rectangle(s, 0, 0, 6, 2, 3, 1, {200, 80, 0, 1, 1, 1, 1.2, 1.5, 3});
    s = as_triangles(s);
    add_rectangle(s, 0, 2, 2, 9, 1, 4, {100, GMOD, 0, COUPLING, 2, 1, 1.4, 1.1, 5});
    add_bar(s, 0.9, 0.6, 1, 0.11, 2000, 700).RADIUS = 0.8;
    add_bar(s, 0.4, 2.9, 7, 0.07, 1500, 600).BARWEIGHT = 9;
    return s;
}

// The same with a triangle without area, which no system takes.
Section flat() {
    Section s = sample();
    const std::int32_t a = node_at(s, 20, 0), b = node_at(s, 21, 1), c = node_at(s, 22, 2);
    s.elements.push_back({a, b, c, c});
    s.materials.push_back(s.materials.back());
    return s;
}

// The same with all moduli so small that most stiffnesses are denormal numbers.
Section faint() {
    Section s = sample();
    for (Material& m : s.materials) m.EMOD *= 1e-309, m.GMOD *= 1e-309;
    s.bars.clear();
    return s;
}

// A section of about so many nodes, numbered at random, of quadrilaterals with bars.
Section large(std::int32_t nodes, double GMOD = 1) {
    Section s = section_of(meshes::make_mesh({meshes::Shape::angle, nodes, 20, false, true}));
    s.groups = 2;
    for (std::size_t e = 0; e < s.materials.size(); ++e)
        s.materials[e] = {2.6, e % 7 == 2 ? GMOD : 1, 0, 1, 2.0 - e % 2, 1, 1.2, 1.5, 3};
    return s;
}

// One host for each way out and each path of the solver: results, refused, not solved.
std::vector<Host> various_hosts() {
    const double modes[] = {VQ_PLASTIC, VQ_PLASTIC_TWO, VQ_ELASTIC};
    std::vector<Host> hosts;
    for (const Section& section : {sample(), sample(0.5), sample(1, -45), faint(), flat(), large(300),
                                   moved(sample(), 1e3, 0, 1), scaled(sample(), 1e100), sample()})
        hosts.push_back(host_of(section, modes[hosts.size() % 3]));
    hosts.back().ELEMENTS[3] = 0;
    for (const Section& section : {sample(), sample(1, -45), flat()}) hosts.push_back(host_of(section, VQ_PLASTIC, 2));
    hosts.push_back(host_of(sample(0.5), VQ_ELASTIC, 1));
    hosts.push_back(host_of(sample(), VQ_PLASTIC, 3));
    hosts.back().ELEMENTS[3] = 0;
    return hosts;
}

Host after_call(Host host) {
    call(host);
    return host;
}

bool same_answer(const Host& a, const Host& b) { return a.STATUS == b.STATUS && same_tables(a, b); }

// The n-th allocation of a run fails, alone or with all later ones: n counts until a run comes through. Returns n.
long fail_every_allocation(const Host& host, void (*fail)(long)) {
    const Host right = after_call(host);
    EXPECT_EQ(right.STATUS, VQ_DONE);
    for (long n = 0;; ++n) {
        Host failed = host;
        const long live = live_blocks();
        fail(n);
        call(failed);
        limit_allocations(-1);
        EXPECT_EQ(live_blocks(), live) << "blocks left after allocation " << n;
        if (failed.STATUS == VQ_DONE) {
            EXPECT_TRUE(same_answer(failed, right));
            return n;
        }
        EXPECT_EQ(failed.STATUS, VQ_OUT_OF_MEMORY) << n;
        EXPECT_TRUE(same_tables(failed, host)) << "tables changed with allocation " << n;
        failed.STATUS = host.STATUS;
        EXPECT_TRUE(same_answer(after_call(failed), right)) << "the call after allocation " << n;
        if (::testing::Test::HasFailure()) return n;
    }
}

// What the whole process can see of itself and a library might change.
std::string process_state() {
    std::ostringstream state;
    for (const char* folder : {"/proc/self/task", "/proc/self/fd"}) {
        std::set<std::string> names;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.insert(entry.path().filename().string() + ' ' + read_symlink(entry.path(), none).string());
        for (const std::string& name : names) state << name << '\n';
    }
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)  // SigQ counts the signals of all the user's processes
        if ((line.rfind("Sig", 0) == 0 && line.rfind("SigQ", 0) != 0) || line.rfind("Umask", 0) == 0)
            state << line << '\n';
    for (int number = 1; number < NSIG; ++number) {
        struct sigaction action {};
        sigaction(number, nullptr, &action);
        state << reinterpret_cast<const void*>(action.sa_handler) << ' ' << action.sa_flags << '\n';
    }
    stack_t stack{};
    sigaltstack(nullptr, &stack);
    state << stack.ss_sp << '\n' << std::setlocale(LC_ALL, nullptr) << '\n' << std::locale().name() << '\n';
    state << std::filesystem::current_path() << '\n' << reinterpret_cast<const void*>(std::get_new_handler()) << '\n';
    for (char** variable = environ; *variable != nullptr; ++variable) state << *variable << '\n';
    return state.str();
}

// Rounding, traps, flags; of the vector unit also the treatment of denormal numbers.
std::vector<int> floating_point_state() {
    std::vector<int> state = {std::fegetround(), fegetexcept(), std::fetestexcept(FE_ALL_EXCEPT)};
#ifdef __SSE2__
    state.push_back(static_cast<int>(_mm_getcsr()));
#endif
    return state;
}

// The stack that work takes in a thread of 128 KiB, whose memory is zero before it.
std::size_t stack_used(std::function<void()> work) {
    constexpr std::size_t size = 128 << 10, guard = 4096;
    void* memory = mmap(nullptr, guard + size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    char* stack = static_cast<char*>(memory) + guard;
    mprotect(memory, guard, PROT_NONE);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, size);
    const auto start = [](void* task) -> void* {
        (*static_cast<std::function<void()>*>(task))();
        return nullptr;
    };
    pthread_t thread;
    EXPECT_EQ(pthread_create(&thread, &attributes, start, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    const std::size_t used = stack + size - std::find_if(stack, stack + size, [](char byte) { return byte != 0; });
    munmap(memory, guard + size);
    return used;
}

}  // namespace

TEST(Reliability, EveryAllocationMayFail) {
    // plain, coupled, and on the general path of the solver; larger ones of more steps in one mode
    for (const Section& section : {sample(), sample(0.5), sample(1, -45), large(40), large(40, -1)}) {
        for (const double mode : {0.0, 1.0, 11.0}) {
            if (section.y.size() > 40 && mode > 0) continue;
            const Host host = host_of(section, mode);
            const long n = fail_every_allocation(host, limit_allocations);
            EXPECT_EQ(fail_every_allocation(host, fail_one_allocation), n);
            EXPECT_GT(n, 100);
        }
    }
    fail_every_allocation(host_of(sample(), 1, 2), fail_one_allocation);
    Section trapped = sample();  // one more call, with an interval that does not begin at 100
    for (double& z : trapped.z) z += 100 - 4.5;
    fail_every_allocation(host_of(trapped, 1, 2), fail_one_allocation);
}

// The finest of three levels may fail: then two are enough.
TEST(Reliability, TwoLevelsAreLeftWhereMemoryEndsInTheThird) {
    const Host host = host_of(sample(), 1, 3), two = after_call(host_of(sample(), 1, 2));
    long ends = 0;
    for (long n = 0;; ++n) {
        Host failed = host;
        const long live = live_blocks();
        fail_one_allocation(n);
        call(failed);
        limit_allocations(-1);
        ASSERT_EQ(live_blocks(), live);
        if (failed.STATUS == VQ_DONE && failed.REACHED == 3) break;
        if (failed.STATUS == VQ_DONE) {
            ASSERT_EQ(failed.REACHED, 2);
            ASSERT_TRUE(same_tables(failed, two));
            ++ends;
        } else {
            ASSERT_EQ(failed.STATUS, VQ_OUT_OF_MEMORY);
            ASSERT_TRUE(same_tables(failed, host));
        }
    }
    EXPECT_GT(ends, 50);
}

// VQ_SOAK_SECONDS in the environment sets the length.
TEST(Reliability, ThreadsDoNotDisturbEachOther) {
    using Clock = std::chrono::steady_clock;
    const char* asked = std::getenv("VQ_SOAK_SECONDS");
    const double seconds = asked != nullptr ? std::atof(asked) : 2;
    const std::vector<Host> hosts = various_hosts();
    std::vector<Host> alone;
    for (const Host& host : hosts) alone.push_back(after_call(host));
    for (const int threads : {2, 8}) {
        const auto end = Clock::now() + std::chrono::duration<double>(seconds / 2);
        std::atomic<long> wrong{0}, failed{0};
        const auto work = [&](int thread) {
            for (std::size_t turn = thread; turn % 8 != 7 || Clock::now() < end; ++turn) {
                const std::size_t k = turn * (2 * thread + 1) % hosts.size();
                Host host = hosts[k];
                if (thread == 0)
                    fail_one_allocation(static_cast<long>(turn % 211));  // failures beside the others' runs
                call(host);
                limit_allocations(-1);
                const bool out_of_memory = thread == 0 && host.STATUS == VQ_OUT_OF_MEMORY;
                if (out_of_memory ? !same_tables(host, hosts[k]) : !same_answer(host, alone[k])) ++wrong;
                failed += out_of_memory;
            }
        };
        std::vector<std::thread> pool;
        for (int thread = 0; thread < threads; ++thread) pool.emplace_back(work, thread);
        for (std::thread& thread : pool) thread.join();
        EXPECT_EQ(wrong, 0);
        EXPECT_GT(failed, 0);
    }
}

// Any rounding, denormal numbers flushed, exceptions that trap: the same bits, and process, thread, modes and flags as
// they were.
TEST(Reliability, LeavesProcessAndModesAsTheyWere) {
    void (*const modes[])() = {
        [] {},
        [] { std::fesetround(FE_UPWARD); },
        [] { std::fesetround(FE_DOWNWARD), std::feraiseexcept(FE_OVERFLOW); },
        [] { std::fesetround(FE_TOWARDZERO); },
        [] { feenableexcept(FE_ALL_EXCEPT); },
#ifdef __SSE2__
        [] { _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON), _mm_setcsr(_mm_getcsr() | 0x40); },  // and denormals are zero
        [] { _mm_setcsr(_MM_FLUSH_ZERO_ON | _MM_ROUND_UP | 0x40); },                          // and everything traps
#endif
    };
    const std::string locale = std::setlocale(LC_ALL, nullptr);
    std::setlocale(LC_ALL, "C.UTF-8");
    std::set<std::int32_t> ends;
    for (const Host& host : various_hosts()) {
        const Host right = after_call(host);
        for (const bool enough : {true, false}) {
            for (const auto& enter : modes) {
                SCOPED_TRACE(&enter - modes);
                Host called = host;
                std::vector<int> entered(4), left(4);
                std::srand(7);
                const int first = std::rand(), second = std::rand();
                std::srand(7);
                const std::string process = process_state();
                const long live = live_blocks();
                EXPECT_EQ(std::rand(), first);
                std::fesetenv(FE_DFL_ENV);
                enter();
                entered = floating_point_state();
                errno = 77;
                limit_allocations(enough ? -1 : 30);
                call(called);
                limit_allocations(-1);
                const int error = errno;
                left = floating_point_state();
                std::fesetenv(FE_DFL_ENV);
                EXPECT_EQ(live_blocks(), live);
                EXPECT_EQ(error, 77);
                EXPECT_EQ(left, entered);
                EXPECT_EQ(std::rand(), second);
                EXPECT_EQ(process_state(), process);
                EXPECT_TRUE(enough ? same_answer(called, right) : same_tables(called, host));
                if (called.STATUS == VQ_NOT_SOLVED) called.POINTS = host.POINTS;  // these alone may have been written
                EXPECT_TRUE(called.STATUS == VQ_DONE || same_tables(called, host));
                ends.insert(called.STATUS);
            }
        }
    }
    EXPECT_EQ(ends, (std::set<std::int32_t>{VQ_DONE, VQ_REFUSED, VQ_NOT_SOLVED, VQ_OUT_OF_MEMORY}));
    std::setlocale(LC_ALL, locale.c_str());
}

// Meshes of any size in a small thread, on both paths of the solver and where memory ends in the midst of a run.
TEST(Reliability, TakesLittleStack) {
    if (sanitized) GTEST_SKIP() << "sanitizers widen the frames";
    std::vector<Host> hosts = various_hosts();
    hosts.insert(hosts.end(), {host_of(large(20000), 1), host_of(large(3000, -1), 1)});
    std::size_t largest = 0;
    for (const Host& host : hosts) {
        const Host right = after_call(host);
        Host called = host, failed = host;
        largest = std::max(largest, stack_used([&] { call(called); }));
        EXPECT_TRUE(same_answer(called, right));
        largest = std::max(largest, stack_used([&] {
                               limit_allocations(200);
                               call(failed);
                               limit_allocations(-1);
                           }));
    }
    EXPECT_LT(largest, std::size_t{64} << 10);
}
