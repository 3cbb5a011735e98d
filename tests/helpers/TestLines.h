// Plain lines, numbered from 1 in the order in which they are added.
#pragma once

#include <string>
#include <vector>

#include "telephone/calls/LineDirectory.h"

namespace telephone::test {

class TestLines final : public LineDirectory
{
public:
    void add(LineAccount line)
    {
        line.lineNumber = static_cast<int>(accounts_.size()) + 1;
        accounts_.push_back(std::move(line));
    }

    std::vector<LineAccount> accounts() const override { return accounts_; }

    std::optional<LineAddress> addressOf(int recordLine, int appearance) const override
    {
        if (recordLine < 1 || recordLine > static_cast<int>(accounts_.size())) {
            return std::nullopt;
        }
        LineAccount const& line = accounts_[static_cast<std::size_t>(recordLine) - 1];
        return LineAddress{recordLine, recordLine, appearance, line.lineURI};
    }

    std::optional<int> lineOfUser(std::string const& user) const override
    {
        for (LineAccount const& line : accounts_) {
            if (line.account.user == user) {
                return line.lineNumber;
            }
        }
        return std::nullopt;
    }

    std::optional<LineAddress> seizeForIncoming(int lineNumber, int) override { return addressOf(lineNumber, 0); }

private:
    std::vector<LineAccount> accounts_;
};

}  // namespace telephone::test
