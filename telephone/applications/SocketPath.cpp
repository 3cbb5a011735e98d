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

std::string reason()
{
    return std::strerror(errno);
}

sockaddr_un addressOf(std::string const& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof(address.sun_path)) {
        throw std::runtime_error("the socket path \"" + path + "\" must have 1 to " +
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

FileDescriptor makeSocket()
{
    FileDescriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!made) {
        throw std::runtime_error("no socket for applications: " + reason());
    }
    return made;
}

// Held while a path is looked at and taken, so that two telephones that start at once do not both find it free.
FileDescriptor lockFolderOf(std::string const& path)
{
    auto const parent = std::filesystem::path(path).parent_path();
    std::string const folder = parent.empty() ? "." : parent.string();
    FileDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened || flock(opened.get(), LOCK_EX) != 0) {
        throw std::runtime_error("the folder " + folder + " of the application socket cannot be used: " + reason());
    }
    return opened;
}

void removeStale(std::string const& path, sockaddr_un const& address)
{
    struct stat found
    {};
    if (lstat(path.c_str(), &found) != 0) {
        return;
    }
    if (!S_ISSOCK(found.st_mode)) {
        throw std::runtime_error(path + " exists and is no socket; it is left alone: name another path with --socket");
    }
    if (tryConnect(makeSocket(), address) || errno == EAGAIN) {
        throw SocketInUse("the application socket " + path +
                          " belongs to a telephone that runs: end it, or name another path with --socket");
    }
    if (errno != ECONNREFUSED || unlink(path.c_str()) != 0) {
        throw std::runtime_error("the application socket " + path + " cannot be replaced: " + reason());
    }
}

void makePrivateFolder(std::string const& folder)
{
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        throw std::runtime_error("cannot make the folder " + folder + ": " + reason());
    }
    struct stat found
    {};
    bool const trusted = lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && found.st_uid == getuid() &&
                         (found.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    if (!trusted) {
        throw std::runtime_error(folder + " is not a folder of yours alone: name a socket elsewhere with --socket");
    }
}

}  // namespace

std::string standardSocketPath()
{
    if (char const* const run = std::getenv("XDG_RUNTIME_DIR"); run != nullptr && std::filesystem::is_directory(run)) {
        return (std::filesystem::path(run) / kFileName).string();
    }
    std::string const folder = "/tmp/telephone-" + std::to_string(getuid());
    makePrivateFolder(folder);
    return folder + "/" + kFileName;
}

FileDescriptor listenAt(std::string const& path)
{
    sockaddr_un const address = addressOf(path);
    FileDescriptor const folder = lockFolderOf(path);
    removeStale(path, address);
    FileDescriptor listener = makeSocket();
    // Set before the file is made, so that it never has another mode.
    if (fchmod(listener.get(), 0600) != 0 ||
        bind(listener.get(), reinterpret_cast<sockaddr const*>(&address), sizeof(address)) != 0 ||
        chmod(path.c_str(), 0600) != 0 || listen(listener.get(), kWaitingConnections) != 0) {
        throw std::runtime_error("cannot open the application socket " + path + ": " + reason());
    }
    return listener;
}

FileDescriptor connectTo(std::string const& path)
{
    FileDescriptor made = makeSocket();
    if (!tryConnect(made, addressOf(path))) {
        throw std::runtime_error("no telephone answers at " + path + " (" + reason() +
                                 "): start one, or name its socket with --socket");
    }
    return made;
}

}  // namespace telephone
