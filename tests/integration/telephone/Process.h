// A program that a test runs, with pipes as its input and output. The destructor kills it if it still runs.
//
// A telephone checks all its traffic and ends at the first message that contradicts the description of the protocol;
// the destructor then fails the test. A test that sends wrong requests starts it with --check events.
//
// It runs in virtual time. A test that needs something outside it starts it with --time real, and says why.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <sys/types.h>

class Process
{
public:
    static constexpr std::chrono::seconds kDeadline{60};

    // Runs a program with its arguments, and with additions NAME=value to the environment. Standard error goes where
    // standard output goes. Throws std::runtime_error if the program cannot be started.
    explicit Process(std::vector<std::string> const& command, std::vector<std::string> const& environment = {});
    ~Process();
    Process(Process const&) = delete;
    Process& operator=(Process const&) = delete;

    void write(std::string const& text);
    void endInput();
    // Reads until the text comes, after the one found last, and returns all output so far. Fails the test at the
    // deadline and at the end of the program, and returns nothing then.
    std::string readUntil(std::string const& text);
    // The rest of the output, up to the end of the program.
    std::string readAll();
    void signal(int number);
    // Waits for the end. The exit status; 128 plus the signal that ended the program; -1 at the deadline.
    int wait();
    [[nodiscard]] pid_t id() const { return id_; }
    [[nodiscard]] std::string const& output() const { return output_; }

private:
    static constexpr int kContradiction = 4;  // exit status of a telephone that found one

    // Reads more output; false at its end or the deadline.
    bool read(std::chrono::steady_clock::time_point deadline);

    pid_t id_ = -1;
    int input_ = -1;
    int outputEnd_ = -1;
    std::string output_;
    std::size_t found_ = 0;
    bool ended_ = false;
    int status_ = -1;
    bool isExpected_ = false;  // the test waited for the status, and compares it itself
};

// Runs a program to its end.
struct Ended
{
    int status;
    std::string output;
};
Ended run(std::vector<std::string> const& command, std::string const& input = {});

// The last line of a program's output, without its end.
std::string lastLine(std::string const& output);
