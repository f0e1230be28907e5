// Has the fuzzer change JSON as JSON every other time.

#include "FuzzTarget.h"
#include "JsonMutation.h"

#include <cstring>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed)
{
    std::mt19937 random(seed);
    if (random() % 2 == 0) {
        const QByteArray changed = KvFuzz::mutated(KvFuzz::bytesOf(data, size), random);
        if (static_cast<std::size_t>(changed.size()) <= maxSize) {
            std::memcpy(data, changed.constData(), static_cast<std::size_t>(changed.size()));
            return static_cast<std::size_t>(changed.size());
        }
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}
