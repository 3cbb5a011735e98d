// The double that a platform accessor answers with at present. A test installs one for as long as it lives; without one
// the accessor answers null.
#pragma once

template <class Interface>
class CurrentDouble
{
public:
    explicit CurrentDouble(Interface& installed)
        : CurrentDouble(&installed)
    {}
    ~CurrentDouble() { current_ = previous_; }
    CurrentDouble(CurrentDouble const&) = delete;
    CurrentDouble& operator=(CurrentDouble const&) = delete;

    static Interface* get() { return current_; }

protected:
    explicit CurrentDouble(Interface* installed)
        : previous_(current_)
    {
        current_ = installed;
    }

private:
    static inline Interface* current_ = nullptr;

    Interface* previous_;
};

// Lets the accessor answer null for as long as it lives.
template <class Interface>
class NoDouble : private CurrentDouble<Interface>
{
public:
    NoDouble()
        : CurrentDouble<Interface>(nullptr)
    {}
};
