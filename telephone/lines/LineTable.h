// The lines of the telephone: identifiers, numbers, accounts, and the appearances that calls occupy. The call engine
// asks it as its LineDirectory, so the composition root makes it before the engine; the lines themselves (Lines) come
// after. Nothing changes after setServer() but the calls on appearances. Any thread.
//
// Numbers: a line has the number given in the configuration, else its position there. Each appearance of a
// multi-call-appearance line has a virtual line number of its own, the first free one from kFirstVirtualLine on, and
// the identifier of the line followed by a hash sign and the index of the appearance: "4711#2".
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "telephone/calls/LineDirectory.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/lines/Accounts.h"
#include "telephone/lines/AppearanceMap.h"

namespace telephone {

class LineTable final : public LineDirectory
{
public:
    static constexpr int kFirstVirtualLine = 129;
    static constexpr int kLastVirtualLine = 255;

    // A line, or one of its appearances.
    struct Row
    {
        LineConfiguration const& configuration;  // of the line, with the defaults filled in
        LineAddress address;
    };

    // Throws std::runtime_error when lines conflict: an identifier or number used twice, too many appearances. The
    // configuration outlives the table.
    explicit LineTable(Configuration const& configuration);

    // Where the lines register. Before the first account is requested.
    void setServer(ServerAddress server) { server_ = std::move(server); }

    std::vector<LineAccount> accounts() const override;
    std::optional<LineAddress> addressOf(int recordLine, int appearance) const override;
    std::optional<int> lineOfUser(std::string const& user) const override;
    std::optional<LineAddress> seizeForIncoming(int lineNumber, int callID) override;

    // In the order of the configuration, each line followed by its appearances.
    std::deque<Row> const& rows() const { return rows_; }
    // By the exact identifier, or by the SIP address of the line's user: "4711", "4711#2", "sip:4711@domain#2". Null
    // when no line or appearance has it.
    Row const* find(std::string const& lineURI) const;
    // By line number or virtual line number; 0 is the line of a single-line telephone.
    Row const* byNumber(int recordLine) const;
    // The primary line, else the first; null without lines.
    Row const* primary() const;
    bool isKeyset() const { return configuration_.keyset; }
    AppearanceMap& appearances() { return appearances_; }

private:
    void addLine(LineConfiguration const& line);
    void addAppearances(LineConfiguration const& line);
    void add(Row row);
    int freeVirtualLine(std::string const& lineID) const;
    bool hasAppearances(Row const& line) const;

    Configuration const& configuration_;
    std::vector<LineConfiguration> lines_;
    std::deque<Row> rows_;  // stable addresses
    std::unordered_map<std::string, Row const*> byId_;
    std::unordered_map<int, Row const*> byNumber_;
    AppearanceMap appearances_;
    ServerAddress server_;
};

}  // namespace telephone
