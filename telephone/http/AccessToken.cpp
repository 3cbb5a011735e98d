#include "telephone/http/AccessToken.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <spdlog/fmt/fmt.h>
#include <sys/random.h>
#include <unistd.h>

#include "telephone/framework/FileDescriptor.h"

namespace telephone {

namespace {

Outcome<std::string> randomText()
{
    std::array<unsigned char, 16> bits{};
    if (getrandom(bits.data(), bits.size(), 0) != static_cast<ssize_t>(bits.size())) {
        return refuse(RefusalKind::kUnavailable, fmt::format("no random bits for the token: {}", std::strerror(errno)));
    }
    return fmt::format("{:02x}", fmt::join(bits, ""));
}

Outcome<> writeToken(std::string const& file, std::string const& text)
{
    unlink(file.c_str());
    // Opens no file that another program has put there meanwhile.
    FileDescriptor const opened(open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!opened || write(opened.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("the token for HTTP cannot be written to {}: {}", file, std::strerror(errno)));
    }
    return {};
}

}  // namespace

Outcome<AccessToken> AccessToken::create(std::string file)
{
    return randomText().and_then([&file](std::string const& text) {
        return writeToken(file, text + "\n").map([&] { return AccessToken(std::move(file), text); });
    });
}

AccessToken::AccessToken(std::string file, std::string text)
    : file_(std::move(file))
    , text_(std::move(text))
{}

AccessToken::AccessToken(AccessToken&& other) noexcept
    : file_(std::exchange(other.file_, {}))
    , text_(std::move(other.text_))
{}

AccessToken::~AccessToken()
{
    if (!file_.empty()) {
        unlink(file_.c_str());
    }
}

bool AccessToken::matches(std::string_view text) const
{
    if (text.size() != text_.size()) {
        return false;
    }
    unsigned difference = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        difference |= static_cast<unsigned char>(text[i]) ^ static_cast<unsigned char>(text_[i]);
    }
    return difference == 0;
}

}  // namespace telephone
