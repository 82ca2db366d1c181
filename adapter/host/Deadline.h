// When waiting has to end, on a clock that nobody sets.
#pragma once

#include <algorithm>
#include <chrono>

using Deadline = std::chrono::steady_clock::time_point;

inline Deadline deadlineIn(std::chrono::milliseconds time)
{
    return std::chrono::steady_clock::now() + time;
}

// What is left, rounded up to the milliseconds of poll(2); 0 when the deadline has passed.
inline int millisecondsLeft(Deadline deadline)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    constexpr std::chrono::milliseconds::rep hour = 3'600'000;
    return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, hour));
}
