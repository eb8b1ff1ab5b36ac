#include <Core/detail/RandomEngine.h>

#include <algorithm>
#include <array>
#include <functional>

namespace vo::detail {

RandomEngine EngineFromSystem()
{
    std::random_device device;
    std::array<unsigned, 8> numbers;
    std::generate(numbers.begin(), numbers.end(), std::ref(device));
    std::seed_seq seed(numbers.begin(), numbers.end());
    return RandomEngine(seed);
}

std::int64_t RandomInteger(std::int64_t low, std::int64_t high)
{
    // Without a destructor: files are still written, under random names, by static objects that end after the thread's.
    thread_local RandomEngine engine = EngineFromSystem();
    return DrawInteger(low, high, engine);
}

} // namespace vo::detail
