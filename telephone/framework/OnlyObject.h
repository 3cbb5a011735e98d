// The one object of a class in this process, for the static Instance() through which the library finds it.
#pragma once

#include <atomic>
#include <stdexcept>
#include <string>

namespace telephone {

// A member of the object, which is known as long as this lives.
template <typename Class>
class OnlyObject
{
public:
    // Throws std::runtime_error if the process has such an object already. name: of the class, in words.
    OnlyObject(Class& object, char const* name)
    {
        Class* none = nullptr;
        if (!object_.compare_exchange_strong(none, &object)) {
            throw std::runtime_error(std::string("this process already has ") + name);
        }
    }
    ~OnlyObject() { object_ = nullptr; }
    OnlyObject(OnlyObject const&) = delete;
    OnlyObject& operator=(OnlyObject const&) = delete;

    // Null while the process has none. Any thread.
    static Class* get() { return object_; }

private:
    static inline std::atomic<Class*> object_{nullptr};
};

}  // namespace telephone
