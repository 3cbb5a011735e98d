// A list of rows, each a set of named texts: how management data lists what it holds.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

class DxlCollection
{
public:
    using Row = std::map<std::string, std::string>;

    void append(Row row) { rows_.push_back(std::move(row)); }
    std::size_t size() const { return rows_.size(); }
    // The text of a row under a name; empty when there is none.
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
