#include "tests/fuzz/Mutator.h"

#include <algorithm>
#include <array>

namespace vrk::fuzz {

namespace {
constexpr std::size_t kMostKept = 2000;
constexpr std::size_t kLongest = 1U << 18U;
} // namespace

Mutator::Mutator(std::vector<std::string> corpus, std::vector<std::string> words, unsigned seed)
    : pool_(std::move(corpus)), words_(std::move(words)), random_(seed) {
    pool_.emplace_back(); // also from nothing
}

std::string Mutator::next() {
    std::string input = pool_[below(pool_.size())];
    for (std::size_t changes = 1 + below(8); changes > 0; --changes)
        change(input);
    input.resize(std::min(input.size(), kLongest));
    return input;
}

void Mutator::learn(const std::string& input, const std::string& way) {
    if (pool_.size() < kMostKept && ways_.insert(way).second)
        pool_.push_back(input);
}

void Mutator::change(std::string& input) {
    static constexpr std::array<unsigned char, 9> kBytes = {0, '\t', '\n', '\r', ' ', '"', 0x7F, 0x80, 0xFF};
    const std::size_t at = below(input.size() + 1);
    const std::size_t length = std::min(below(1U << below(10)), input.size() - at);
    switch (below(8)) {
    case 0:
        if (at < input.size())
            input[at] = static_cast<char>(input[at] ^ (1 << below(8)));
        break;
    case 1:
        input.insert(at, 1, static_cast<char>(kBytes.at(below(kBytes.size()))));
        break;
    case 2:
    case 3:
        input.insert(at, words_[below(words_.size())]);
        break;
    case 4:
        input.erase(at, length);
        break;
    case 5: // again and again: numbers of rows and lengths of fields have their limits
        for (std::size_t times = 1U << below(8); times > 0 && input.size() < kLongest; --times)
            input.insert(at, input.substr(at, length));
        break;
    case 6:
        input.resize(at);
        break;
    default: {
        const std::string& other = pool_[below(pool_.size())];
        input.insert(at, other, below(other.size() + 1), below(200));
    }
    }
}

} // namespace vrk::fuzz
