// Pairs two sequences so that as little as possible differs, as a comparison of files does. Pure functions.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace telephone {

enum class Likeness
{
    kEqual,
    kSimilar,  // a changed form of the other
    kUnlike,   // cannot be a pair
};

// One place: a pair, or an entry of one sequence alone.
struct SequencePair
{
    std::optional<std::size_t> recorded;
    std::optional<std::size_t> present;
};

using LikenessOf = std::function<Likeness(std::size_t recorded, std::size_t present)>;

// In their order. A similar pair costs as much as a single entry. The time grows with the product of the parts that
// remain when equal beginnings and ends are left out.
std::vector<SequencePair> pairSequences(std::size_t recorded, std::size_t present, LikenessOf const& likeness);

}  // namespace telephone
