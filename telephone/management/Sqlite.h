// RAII for the parts of the SQLite C interface that the store uses. One thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <sqlite3.h>

namespace telephone::sqlite {

struct Closer
{
    void operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

using Connection = std::unique_ptr<sqlite3, Closer>;

class Statement
{
public:
    Statement(sqlite3* connection, std::string_view sql)
    {
        sqlite3_stmt* statement = nullptr;
        result_ = sqlite3_prepare_v2(connection, sql.data(), static_cast<int>(sql.size()), &statement, nullptr);
        statement_.reset(statement);
    }

    // Parameters are numbered from 1. The text must outlive the step.
    void bind(int parameter, std::string_view text)
    {
        if (statement_ != nullptr && result_ == SQLITE_OK) {
            result_ = sqlite3_bind_text(statement_.get(), parameter, text.data(), static_cast<int>(text.size()),
                                        SQLITE_STATIC);
        }
    }
    // SQLITE_ROW, SQLITE_DONE, or the error of preparing, binding or this step.
    int step()
    {
        if (result_ == SQLITE_OK || result_ == SQLITE_ROW) {
            result_ = statement_ == nullptr ? SQLITE_MISUSE : sqlite3_step(statement_.get());
        }
        return result_;
    }
    // Columns are numbered from 0.
    std::string text(int column) const
    {
        auto const* bytes = sqlite3_column_blob(statement_.get(), column);
        auto const size = static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column));
        return bytes == nullptr ? std::string() : std::string(static_cast<char const*>(bytes), size);
    }
    std::int64_t number(int column) const { return sqlite3_column_int64(statement_.get(), column); }

private:
    int result_ = SQLITE_OK;
    std::unique_ptr<sqlite3_stmt, Closer> statement_;
};

// Runs statements without results.
inline int execute(sqlite3* connection, char const* sql)
{
    return sqlite3_exec(connection, sql, nullptr, nullptr, nullptr);
}

}  // namespace telephone::sqlite
