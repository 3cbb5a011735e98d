#include "telephone/http/AccessToken.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <spdlog/fmt/fmt.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include "telephone/framework/FileDescriptor.h"

namespace telephone {

namespace {

constexpr std::size_t kTokenBytes = 16;
constexpr std::size_t kTokenLength = 2 * kTokenBytes;

Outcome<std::string> randomText()
{
    std::array<unsigned char, kTokenBytes> bits{};
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

// Empty: there is no token in the file, or not one that only its owner can read.
std::string readToken(std::string const& file)
{
    FileDescriptor const opened(open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status
    {};
    if (!opened || fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid() ||
        (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        return {};
    }
    std::array<char, kTokenLength + 1> text{};
    auto const length = read(opened.get(), text.data(), text.size());
    std::string_view const token(text.data(), kTokenLength);
    bool const isToken = length == static_cast<ssize_t>(text.size()) && text.back() == '\n' &&
                         token.find_first_not_of("0123456789abcdef") == std::string_view::npos;
    return isToken ? std::string(token) : std::string();
}

}  // namespace

Outcome<AccessToken> AccessToken::keep(std::string const& file)
{
    if (auto token = readToken(file); !token.empty()) {
        return AccessToken({}, std::move(token));
    }
    return randomText().and_then([&file](std::string const& text) {
        return writeToken(file, text + "\n").map([&] { return AccessToken({}, text); });
    });
}

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
