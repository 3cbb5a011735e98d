// A program that a test runs: its input and output are pipes, it is ended by its process id at the latest with the
// test.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

class Process
{
public:
    static constexpr std::chrono::seconds kDeadline{60};

    // Runs a program with its arguments; standard error goes where standard output goes. More of the environment is
    // given as NAME=value. Throws std::runtime_error where it cannot be started.
    explicit Process(std::vector<std::string> const& command, std::vector<std::string> const& environment = {});
    ~Process();
    Process(Process const&) = delete;
    Process& operator=(Process const&) = delete;

    void write(std::string const& text);
    void endInput();
    // All output so far once it holds the text, from where the last one was found on. Fails the test at the deadline,
    // or when the program has ended without it; then the output is empty.
    std::string readUntil(std::string const& text);
    // The rest of the output, up to the end of the program.
    std::string readAll();
    void signal(int number);
    // The exit status once it has ended, 128 and the signal where it was ended by one; -1 at the deadline.
    int wait();
    [[nodiscard]] pid_t id() const { return id_; }
    [[nodiscard]] std::string const& output() const { return output_; }

private:
    // More output; false at its end or the deadline.
    bool read(std::chrono::steady_clock::time_point deadline);

    pid_t id_ = -1;
    int input_ = -1;
    int outputEnd_ = -1;
    std::string output_;
    std::size_t found_ = 0;
    bool ended_ = false;
    int status_ = -1;
};

// Runs a program to its end with that input.
struct Ended
{
    int status;
    std::string output;
};
Ended run(std::vector<std::string> const& command, std::string const& input = {});
