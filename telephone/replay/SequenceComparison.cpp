#include "telephone/replay/SequenceComparison.h"

#include <algorithm>
#include <cstdint>

namespace telephone {

namespace {

constexpr std::size_t kMostCompared = 2000;  // entries of each sequence at once

// Compares the entries from `begin` on, `rows` of the recorded and `columns` of the present ones.
class Comparison
{
public:
    Comparison(std::size_t begin, std::size_t rows, std::size_t columns, LikenessOf const& likeness)
        : begin_(begin)
        , rows_(rows)
        , columns_(columns)
        , likeness_(likeness)
        , costs_((rows + 1) * (columns + 1))
    {
        for (std::size_t row = rows_ + 1; row-- > 0;) {
            for (std::size_t column = columns_ + 1; column-- > 0;) {
                cost(row, column) = leastCost(row, column);
            }
        }
    }

    void append(std::vector<SequencePair>& pairs)
    {
        std::size_t row = 0;
        std::size_t column = 0;
        while (row < rows_ || column < columns_) {
            bool const isPair = row < rows_ && column < columns_ && cost(row, column) == pairCost(row, column);
            bool const isRecorded =
                isPair || column == columns_ || (row < rows_ && cost(row, column) == cost(row + 1, column) + 1);
            bool const isPresent = isPair || !isRecorded;
            pairs.push_back({isRecorded ? std::optional(begin_ + row++) : std::nullopt,
                             isPresent ? std::optional(begin_ + column++) : std::nullopt});
        }
    }

private:
    static constexpr std::uint32_t kNever = UINT32_MAX;

    std::uint32_t& cost(std::size_t row, std::size_t column) { return costs_[row * (columns_ + 1) + column]; }

    std::uint32_t pairCost(std::size_t row, std::size_t column)
    {
        switch (likeness_(begin_ + row, begin_ + column)) {
        case Likeness::kEqual:
            return cost(row + 1, column + 1);
        case Likeness::kSimilar:
            return cost(row + 1, column + 1) + 1;
        case Likeness::kUnlike:
            break;
        }
        return kNever;
    }

    // Of what follows this place.
    std::uint32_t leastCost(std::size_t row, std::size_t column)
    {
        if (row == rows_ || column == columns_) {
            return static_cast<std::uint32_t>(rows_ - row + columns_ - column);
        }
        return std::min({cost(row + 1, column) + 1, cost(row, column + 1) + 1, pairCost(row, column)});
    }

    std::size_t const begin_;
    std::size_t const rows_;
    std::size_t const columns_;
    LikenessOf const& likeness_;
    std::vector<std::uint32_t> costs_;
};

}  // namespace

std::vector<SequencePair> pairSequences(std::size_t recorded, std::size_t present, LikenessOf const& likeness)
{
    std::vector<SequencePair> pairs;
    std::size_t const shorter = std::min(recorded, present);
    std::size_t begin = 0;
    for (; begin < shorter && likeness(begin, begin) == Likeness::kEqual; ++begin) {
        pairs.push_back({begin, begin});
    }
    std::size_t equalAtEnd = 0;
    while (equalAtEnd < shorter - begin &&
           likeness(recorded - 1 - equalAtEnd, present - 1 - equalAtEnd) == Likeness::kEqual) {
        ++equalAtEnd;
    }
    std::size_t rowsLeft = recorded - begin - equalAtEnd;
    std::size_t columnsLeft = present - begin - equalAtEnd;
    std::size_t const rows = std::min(rowsLeft, kMostCompared);
    std::size_t const columns = std::min(columnsLeft, kMostCompared);
    Comparison(begin, rows, columns, likeness).append(pairs);
    for (std::size_t i = rows; i < rowsLeft; ++i) {
        pairs.push_back({begin + i, std::nullopt});
    }
    for (std::size_t i = columns; i < columnsLeft; ++i) {
        pairs.push_back({std::nullopt, begin + i});
    }
    for (std::size_t i = equalAtEnd; i > 0; --i) {
        pairs.push_back({recorded - i, present - i});
    }
    return pairs;
}

}  // namespace telephone
