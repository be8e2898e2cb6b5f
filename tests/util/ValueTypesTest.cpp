// Gentra, copyright the Gentra authors.
// SPDX-License-Identifier: MIT

#include <gentra/gentra.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <random>
#include <type_traits>

namespace {

using Util::RefCountPtr;
using Util::ShortID;
using Util::String;

static_assert(std::is_trivially_copyable_v<Math::Vec3> && sizeof(Math::Vec3) == 12);
static_assert(std::is_trivially_copyable_v<Gentra::Member> && sizeof(Gentra::Member) == sizeof(void*));
static_assert(sizeof(String) == sizeof(std::string) && sizeof(ShortID) == 4);

// The hash.

/// The same function, told byte by byte.
unsigned int ModelHash(std::string const& text) {
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::size_t const chunkStart = i / 5552 * 5552;
        std::size_t const chunkSize = std::min<std::size_t>(5552, text.size() - chunkStart);
        bool const inGroup = i - chunkStart < chunkSize / 16 * 16;
        char const c = inGroup && text[i] >= 'A' && text[i] <= 'Z' ? static_cast<char>(text[i] + 32) : text[i];
        a += static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<std::int8_t>(c)));
        b += a;
        if (i + 1 == chunkStart + chunkSize && chunkSize % 16 != 0) {
            a %= 65521u;
            b %= 65521u;
        }
    }
    return (b << 16) | a;
}

TEST(StringHash, HasTheValuesThatStoredIdsAreMadeOf) {
    EXPECT_EQ(String("").Hash(), 0u);
    EXPECT_EQ(String("ABC").Hash(), 0x018A00C6u);
    EXPECT_EQ(String("ABCDEFGHIJKLMNOP").Hash(), 0x36300688u);
    EXPECT_EQ(String("abcdefghijklmnop").Hash(), 0x36300688u);
    EXPECT_EQ(String("ABCDEFGHIJKLMNOPQ").Hash(), 0x3D0906D9u);
    std::mt19937 random(1);
    for (std::size_t const length :
         {1u, 15u, 16u, 17u, 31u, 32u, 33u, 5551u, 5552u, 5553u, 5567u, 5568u, 11104u, 11105u, 20000u}) {
        std::string text(length, '\0');
        for (char& c : text) {
            c = static_cast<char>(random());
        }
        EXPECT_EQ(String(text).Hash(), ModelHash(text)) << length;
    }
}

// IDs.

TEST(ShortIDs, AreOrderedAsSignedNumbersAndConvertBothWays) {
    EXPECT_LT(ShortID(-1), ShortID(1));
    EXPECT_TRUE(ShortID(0) == 0 && static_cast<int>(ShortID(-7)) == -7);
}

// Drawn before any test. The library itself drew its first IDs while it loaded; these are still words of the
// seed.
auto const firstWord = static_cast<std::uint32_t>(ShortID::Generate());
auto const secondWord = static_cast<std::uint32_t>(ShortID::Generate());

TEST(RandomSource, HandsOutUntemperedTwisterWords) {
    std::vector<std::uint32_t> words(2000);
    for (std::uint32_t& word : words) {
        word = static_cast<std::uint32_t>(ShortID::Generate());
    }
    for (std::size_t k = 0; k + 624 < words.size(); ++k) {
        std::uint32_t const y = (words[k] & 0x80000000u) | (words[k + 1] & 0x7FFFFFFFu);
        ASSERT_EQ(words[k + 624], words[k + 397] ^ (y >> 1) ^ ((y & 1u) != 0 ? 0x9908B0DFu : 0u)) << k;
    }
}

TEST(RandomSource, IsSeededFromTheClockByFourBytesPerWord) {
    auto const now = static_cast<unsigned int>(std::time(nullptr));
    bool found = false;
    for (unsigned int age = 0; age < 120 && !found; ++age) {
        std::srand(now - age);
        std::vector<std::uint32_t> words;
        for (int i = 0; i < 624; ++i) {
            std::uint32_t r[4];
            for (std::uint32_t& byte : r) {
                byte = static_cast<std::uint32_t>(std::rand()) & 0xFFu;
            }
            words.push_back((r[1] << 24) | (r[0] << 16) | (r[2] << 8) | r[3]);
        }
        for (std::size_t i = 0; i + 1 < words.size(); ++i) {
            found = found || (words[i] == firstWord && words[i + 1] == secondWord);
        }
    }
    EXPECT_TRUE(found);
}

// Shared pointers.

struct Counted {
    static inline int alive = 0;
    Counted() { ++alive; }
    Counted(Counted const&) { ++alive; }
    ~Counted() { --alive; }
};
struct Plain { // no virtual destructor, and not at the start of its derived classes
    int plain = 0;
};
struct Derived : Counted, Plain {};

TEST(SharedPointers, OwnTheirObjectTogetherAndDestroyItAsWhatItWasCreatedAs) {
    {
        RefCountPtr<Counted> const first;
        RefCountPtr<Counted> second = first;
        RefCountPtr<Counted> third(nullptr);
        EXPECT_EQ(third.GetCount(), 1);
        third = second;
        second = *&second;
        EXPECT_EQ(first.GetCount(), 3);
        second = RefCountPtr<Counted>(nullptr);
        EXPECT_EQ(second.Get(), nullptr);
        EXPECT_EQ(first.GetCount(), 2);
        EXPECT_EQ(Counted::alive, 1) << "a default pointer holds a new object";
        EXPECT_TRUE(first == third);

        RefCountPtr<Plain> const asBase(new Derived);
        RefCountPtr<Derived> const derived;
        RefCountPtr<Plain> converted(derived);
        EXPECT_EQ(converted.Get(), derived.Get());
        converted = derived;
        EXPECT_EQ(derived.GetCount(), 2);
        converted = asBase;
        EXPECT_EQ(derived.GetCount(), 1);
        EXPECT_EQ(Counted::alive, 3);
    }
    EXPECT_EQ(Counted::alive, 0);
}

} // namespace
