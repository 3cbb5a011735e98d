// The double that a platform accessor returns. A test installs one for its own lifetime; without one the accessor
// returns null.
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

// Makes the accessor return null for the lifetime of this object.
template <class Interface>
class NoDouble : private CurrentDouble<Interface>
{
public:
    NoDouble()
        : CurrentDouble<Interface>(nullptr)
    {}
};
