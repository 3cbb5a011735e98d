#include "telephone/applications/SocketPath.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace telephone {

namespace {

constexpr char const* kFileName = "telephone.socket";
constexpr int kWaitingConnections = 128;

// The reason of a failed system call follows the text.
tl::unexpected<Refusal> failed(std::string const& what)
{
    return refuse(RefusalKind::kUnavailable, what + ": " + std::strerror(errno));
}

Outcome<sockaddr_un> addressOf(std::string const& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.sun_path)) {
        return refuse(RefusalKind::kBadInput, "the socket path \"" + path + "\" must have 1 to " +
                                                  std::to_string(sizeof(address.sun_path) - 1) +
                                                  " bytes: name a shorter one with --socket");
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

bool tryConnect(FileDescriptor const& socket, sockaddr_un const& address)
{
    return connect(socket.get(), reinterpret_cast<sockaddr const*>(&address), sizeof(address)) == 0;
}

Outcome<FileDescriptor> makeSocket()
{
    FileDescriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!made) {
        return failed("no socket for applications");
    }
    return made;
}

// Held while a path is checked and taken, so that two telephones starting at once do not both find it free.
Outcome<FileDescriptor> lockFolderOf(std::string const& path)
{
    auto const parent = std::filesystem::path(path).parent_path();
    std::string const folder = parent.empty() ? "." : parent.string();
    FileDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened || flock(opened.get(), LOCK_EX) != 0) {
        return failed("the folder " + folder + " of the application socket cannot be used");
    }
    return opened;
}

Outcome<> removeStale(std::string const& path, sockaddr_un const& address)
{
    struct stat found
    {};
    if (lstat(path.c_str(), &found) != 0) {
        return {};
    }
    if (!S_ISSOCK(found.st_mode)) {
        return refuse(RefusalKind::kBadInput,
                      path + " exists and is not a socket; it was left alone: name another path with --socket");
    }
    return makeSocket().and_then([&](FileDescriptor const& probe) -> Outcome<> {
        if (tryConnect(probe, address) || errno == EAGAIN) {
            return refuse(RefusalKind::kAlreadyExists,
                          "the application socket " + path +
                              " belongs to a running telephone: end it, or name another path with --socket");
        }
        if (errno != ECONNREFUSED || unlink(path.c_str()) != 0) {
            return failed("the application socket " + path + " cannot be replaced");
        }
        return {};
    });
}

Outcome<FileDescriptor> bindAndListen(FileDescriptor listener, std::string const& path, sockaddr_un const& address)
{
    // The mode is set before the file is created, so that the file never has another one.
    if (fchmod(listener.get(), 0600) != 0 ||
        bind(listener.get(), reinterpret_cast<sockaddr const*>(&address), sizeof(address)) != 0 ||
        chmod(path.c_str(), 0600) != 0 || listen(listener.get(), kWaitingConnections) != 0) {
        return failed("cannot open the application socket " + path);
    }
    return listener;
}

Outcome<> makePrivateFolder(std::string const& folder)
{
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        return failed("cannot create the folder " + folder);
    }
    struct stat found
    {};
    bool const trusted = lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == getuid() &&
                         (found.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    if (!trusted) {
        return refuse(RefusalKind::kNotPermitted,
                      folder + " is not a folder of yours alone: name a socket elsewhere with --socket");
    }
    return {};
}

}  // namespace

Outcome<std::string> standardSocketPath()
{
    if (char const* const run = std::getenv("XDG_RUNTIME_DIR"); run != nullptr && std::filesystem::is_directory(run)) {
        return (std::filesystem::path(run) / kFileName).string();
    }
    std::string const folder = "/tmp/telephone-" + std::to_string(getuid());
    return makePrivateFolder(folder).map([&folder] { return folder + "/" + kFileName; });
}

Outcome<FileDescriptor> listenAt(std::string const& path)
{
    return addressOf(path).and_then([&](sockaddr_un const& address) {
        auto const lock = lockFolderOf(path);
        return lock.and_then([&](FileDescriptor const&) { return removeStale(path, address); })
            .and_then(makeSocket)
            .and_then([&](FileDescriptor made) { return bindAndListen(std::move(made), path, address); });
    });
}

}  // namespace telephone
