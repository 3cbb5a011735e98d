/// @file
/// A list of rows, each a set of named texts: how management data lists what it holds.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// A list of rows. Thread: one at a time.
class DxlCollection
{
public:
    /// One row: texts by their names.
    using Row = std::map<std::string, std::string>;

    /// Adds a row at the end.
    void append(Row row) { rows_.push_back(std::move(row)); }
    /// The number of rows.
    /// @return 0 for an empty list.
    std::size_t size() const { return rows_.size(); }
    /// Reads a text of a row.
    /// @param row index of the row, from 0
    /// @param name the name of the text
    /// @return The text; empty when the row or the name does not exist.
    std::string value(std::size_t row, std::string const& name) const
    {
        if (row >= rows_.size()) {
            return {};
        }
        auto const found = rows_[row].find(name);
        return found == rows_[row].end() ? std::string() : found->second;
    }

private:
    std::vector<Row> rows_;
};
