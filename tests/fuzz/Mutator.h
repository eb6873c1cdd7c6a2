#pragma once

#include <random>
#include <set>
#include <string>
#include <vector>

namespace vrk::fuzz {

/// Makes inputs out of good ones. The same seed gives the same inputs on every machine, as long as the reader
/// goes the same ways.
class Mutator {
  public:
    Mutator(std::vector<std::string> corpus, std::vector<std::string> words, unsigned seed);

    /// An input changed a few times over.
    std::string next();
    /// How the reader took the input that next() gave last: a way not seen before makes it one to start from.
    void learn(const std::string& input, const std::string& way);

  private:
    std::size_t below(std::size_t end) { return end == 0 ? 0 : random_() % end; }
    void change(std::string& input);

    std::vector<std::string> pool_;
    std::vector<std::string> words_;
    std::set<std::string> ways_;
    std::mt19937 random_;
};

} // namespace vrk::fuzz
