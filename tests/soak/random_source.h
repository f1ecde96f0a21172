// Reproducible random steps: everything comes from one seeded engine.
#pragma once

#include <windows.h>

#include <cstdint>
#include <initializer_list>
#include <random>

namespace quill::soak {

class random_source
{
public:
    explicit random_source(std::uint64_t seed) : engine_(seed) {}

    // 0 to limit - 1.
    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(engine_() % limit); }
    bool chance(std::size_t one_in) { return below(one_in) == 0; }
    template <class Value>
    Value one_of(std::initializer_list<Value> values)
    {
        return values.begin()[below(values.size())];
    }

    // Mostly small, sometimes at the limits of the type.
    LONG number()
    {
        return chance(4) ? one_of<LONG>({0, -1, 1, 0x7fff, 0xffff, 0x7fffffff, LONG{-0x7fffffff} - 1})
                         : static_cast<LONG>(below(64)) - 16;
    }
    RECT rectangle()
    {
        if (chance(3))
            return {number(), number(), number(), number()};
        const auto x = static_cast<LONG>(below(200));
        const auto y = static_cast<LONG>(below(200));
        return {x, y, x + static_cast<LONG>(below(500)), y + static_cast<LONG>(below(400))};
    }

private:
    std::mt19937_64 engine_;
};

} // namespace quill::soak
