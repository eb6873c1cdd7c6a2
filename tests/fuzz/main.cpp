#include "platform/files/files.h"
#include "platform/runtime/Fault.h"
#include "tests/fuzz/Mutator.h"
#include "tests/fuzz/targets.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

/// Feeds readers of files with broken ones. Each target runs in a process of its own, so that what kills it,
/// or what it hangs on, is known: the input of then is written to a file.
///
/// usage: vrk_fuzz SECONDS SEED [TARGET...]      vrk_fuzz replay TARGET FILE
namespace {

using namespace vrk;
using namespace vrk::fuzz;
namespace fs = std::filesystem;

constexpr std::chrono::seconds kHang{20};

/// What the parent sees of the child.
struct Shared {
    std::atomic<long long> done;
    std::atomic<std::size_t> size;
    char input[1U << 19U];
};

std::string runOnce(const Target& target, std::string_view bytes) {
    try {
        return target.run(bytes);
    } catch (const Fault& fault) {
        return std::string(fault.what()).substr(0, 24); // a message is what a user should see
    }
}

[[noreturn]] void feed(const Target& target, unsigned seed, std::chrono::seconds time, Shared& shared) {
    int code = 0;
    try {
        Mutator mutator(target.corpus, target.words, seed);
        const auto end = std::chrono::steady_clock::now() + time;
        while (std::chrono::steady_clock::now() < end) {
            const std::string input = mutator.next();
            std::memcpy(shared.input, input.data(), input.size());
            shared.size = input.size();
            mutator.learn(input, runOnce(target, input));
            ++shared.done;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", target.name.c_str(), error.what());
        code = 1;
    }
    std::_Exit(code);
}

/// \return true if the child has come to its end by itself; a child that stands still is ended.
bool watch(pid_t child, const Shared& shared) {
    long long seen = -1;
    auto moved = std::chrono::steady_clock::now();
    for (;;) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child)
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        if (shared.done != seen) {
            seen = shared.done;
            moved = std::chrono::steady_clock::now();
        } else if (std::chrono::steady_clock::now() - moved > kHang) {
            std::fprintf(stderr, "one input has taken %lld seconds\n", static_cast<long long>(kHang.count()));
            kill(child, SIGKILL);
        }
        usleep(50'000);
    }
}

bool fuzzTarget(const Target& target, unsigned seed, std::chrono::seconds time) {
    auto* shared = static_cast<Shared*>(
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    if (shared == MAP_FAILED)
        throw std::runtime_error("no memory");
    const pid_t child = fork();
    if (child == 0)
        feed(target, seed, time, *shared);
    const bool good = watch(child, *shared);
    std::printf("%-12s %8lld inputs  %s\n", target.name.c_str(), shared->done.load(), good ? "ok" : "FAILED");
    if (!good) {
        const std::string file = "fuzz-" + target.name + "-" + std::to_string(seed) + ".input";
        replaceFile(file, std::string(shared->input, shared->size));
        std::printf("the input stands in %s; run it again: vrk_fuzz replay %s %s\n", file.c_str(),
                    target.name.c_str(), file.c_str());
    }
    std::fflush(stdout);
    munmap(shared, sizeof(Shared));
    return good;
}

const Target& named(const std::vector<Target>& targets, const std::string& name) {
    std::string known;
    for (const Target& target : targets) {
        if (target.name == name)
            return target;
        known += " " + target.name;
    }
    throw std::runtime_error("there is no target " + name + "; the targets are" + known);
}

int run(const std::vector<std::string>& words, const fs::path& scratch) {
    const auto targets = makeTargets(VRK_EXAMPLES, scratch);
    if (words.size() == 3 && words[0] == "replay") {
        std::printf("%s\n", runOnce(named(targets, words[1]), readFile(words[2])).c_str());
        return 0;
    }
    if (words.size() < 2)
        throw std::runtime_error("usage: vrk_fuzz SECONDS SEED [TARGET...] | vrk_fuzz replay TARGET FILE");
    const std::chrono::seconds seconds{std::stol(words[0])};
    const auto seed = static_cast<unsigned>(std::stoul(words[1]));
    std::vector<Target> wanted;
    for (std::size_t word = 2; word < words.size(); ++word)
        wanted.push_back(named(targets, words[word]));
    if (wanted.empty())
        wanted = targets;
    bool good = true;
    for (const Target& target : wanted)
        good = fuzzTarget(target, seed, seconds) && good;
    return good ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    // In memory where there is such a place: the readers' files are flushed to the disk a thousand times.
    const fs::path memory = "/dev/shm";
    const fs::path base = fs::is_directory(memory) ? memory : fs::temp_directory_path();
    std::string scratch = (base / "vrk-fuzz-XXXXXX").string();
    if (mkdtemp(scratch.data()) == nullptr)
        return 1;
    int code = 1;
    try {
        code = run({argv + 1, argv + argc}, scratch);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    std::error_code ignored;
    fs::remove_all(scratch, ignored);
    return code;
}
