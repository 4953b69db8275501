// Deep copies of nested structures in one piece of memory.

#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace camInfosync {

// A list in a flat copy; of a map, the pairs in the order of their keys.
template <typename T>
class Span {
  public:
    using Element = T;

    Span() = default;
    Span(const T* first, size_t size) : mFirst(first), mSize(size) {}

    const T* begin() const { return mFirst; }
    const T* end() const { return mFirst + mSize; }
    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    const T& front() const { return *mFirst; }

  private:
    const T* mFirst = nullptr;
    size_t mSize = 0;
};

namespace flat {

// How many members a structure and its flat counterpart have; 0 for what is no such structure.
template <typename Flat>
inline constexpr size_t kMemberCount = 0;

// References to all members. Does not compile with a structure that has another number of them.
template <size_t kCount, typename Structure>
auto membersOf(Structure& structure) {
    if constexpr (kCount == 5) {
        auto& [a, b, c, d, e] = structure;
        return std::tie(a, b, c, d, e);
    } else if constexpr (kCount == 7) {
        auto& [a, b, c, d, e, f, g] = structure;
        return std::tie(a, b, c, d, e, f, g);
    } else {
        static_assert(kCount == 13, "no such structure so far: add a branch");
        auto& [a, b, c, d, e, f, g, h, i, j, k, l, m] = structure;
        return std::tie(a, b, c, d, e, f, g, h, i, j, k, l, m);
    }
}

template <typename T>
inline constexpr bool kIsSpan = false;
template <typename T>
inline constexpr bool kIsSpan<Span<T>> = true;

template <typename T>
inline constexpr bool kIsPair = false;
template <typename First, typename Second>
inline constexpr bool kIsPair<std::pair<First, Second>> = true;

// Where lists begin in a piece, and the piece itself: what any element asks for.
inline constexpr size_t kAlignment = 8;

constexpr size_t aligned(size_t size) {
    return (size + kAlignment - 1) / kAlignment * kAlignment;
}

// The first pass: adds up what a copy takes. The sums cannot overflow: that is less than twice
// the memory that the original takes, and no original takes half of all addresses.
class Sizes {
  public:
    // With room for the last alignment, which the second pass never goes past.
    size_t lists() const { return aligned(mLists); }
    size_t all() const { return lists() + mTexts; }

    std::string_view addText(std::string_view text) {
        mTexts += text.size();
        return {};
    }

    template <typename T>
    const T* beginList() {
        mLists = aligned(mLists);
        return nullptr;
    }

    template <typename T>
    void addElement(const T& /*element*/) {
        mLists += sizeof(T);
    }

  private:
    size_t mLists = 0;
    size_t mTexts = 0;
};

// The second pass: writes the elements of all lists, and the texts behind them. Throws
// std::bad_alloc instead of leaving its part of the piece, should the original have grown since
// the first pass although its owner keeps it from changing.
class Writer {
  public:
    // `piece` is aligned to kAlignment and has the size that the first pass found.
    Writer(std::byte* piece, const Sizes& sizes)
        : mPiece(piece), mListsEnd(sizes.lists()), mText(sizes.lists()), mTextsEnd(sizes.all()) {}

    std::string_view addText(std::string_view text) {
        checkRoom(text.size(), mTextsEnd - mText);
        char* const begin = reinterpret_cast<char*>(mPiece + mText);
        mText += text.copy(begin, text.size());
        return {begin, text.size()};
    }

    template <typename T>
    const T* beginList() {
        static_assert(alignof(T) <= kAlignment && std::is_trivially_destructible_v<T>);
        mElement = aligned(mElement);
        return reinterpret_cast<const T*>(mPiece + mElement);
    }

    template <typename T>
    void addElement(const T& element) {
        checkRoom(sizeof(T), mListsEnd - mElement);
        new (mPiece + mElement) T(element);
        mElement += sizeof(T);
    }

  private:
    static void checkRoom(size_t size, size_t room) {
        if (size > room) {
            throw std::bad_alloc();
        }
    }

    std::byte* const mPiece;
    const size_t mListsEnd;
    size_t mElement = 0;  // where the next element goes
    size_t mText;         // where the next text goes
    const size_t mTextsEnd;
};

template <typename Pass, typename From, typename To, size_t... kIndex>
void copyMembers(Pass& pass, const From& from, const To& to, std::index_sequence<kIndex...>);

// Copies numbers, texts, lists, and structures of them.
template <typename Pass, typename From, typename To>
void copyValue(Pass& pass, const From& from, To& to) {
    constexpr size_t kMembers = kMemberCount<To>;
    if constexpr (kMembers > 0) {
        copyMembers(pass, membersOf<kMembers>(from), membersOf<kMembers>(to),
                    std::make_index_sequence<kMembers>());
    } else if constexpr (kIsPair<To>) {
        copyValue(pass, from.first, to.first);
        copyValue(pass, from.second, to.second);
    } else if constexpr (kIsSpan<To>) {
        using Element = typename To::Element;
        const Element* const first = pass.template beginList<Element>();
        size_t count = 0;
        for (const auto& element : from) {
            Element copied{};
            copyValue(pass, element, copied);
            pass.addElement(copied);
            ++count;
        }
        to = To(first, count);
    } else if constexpr (std::is_same_v<To, std::string_view>) {
        to = pass.addText(from);
    } else {
        static_assert(std::is_same_v<From, To> && std::is_trivially_copyable_v<To>);
        to = from;
    }
}

template <typename Pass, typename From, typename To, size_t... kIndex>
void copyMembers(Pass& pass, const From& from, const To& to,
                 std::index_sequence<kIndex...> /*members*/) {
    (copyValue(pass, std::get<kIndex>(from), std::get<kIndex>(to)), ...);
}

}  // namespace flat

// A deep copy of a structure, independent of the original: numbers as they are, texts as views,
// lists and maps as spans. All that these show lies in one piece of memory, which is sized in a
// first pass and written in a second: inside this object if it has up to `kSmall` bytes, otherwise
// in one allocation. `Flat` has the members of the original in the same order; neither another
// number of them nor another type of a number compiles.
//
// The original must not change during the construction. Throws std::bad_alloc.
template <typename Flat, size_t kSmall>
class FlatCopy : public Flat {
  public:
    template <typename Structure>
    explicit FlatCopy(const Structure& original) {
        Flat& self = *this;
        flat::Sizes sizes;
        flat::copyValue(sizes, original, self);
        if (sizes.all() > kSmall) {
            mLarge.reset(new std::byte[sizes.all()]);  // make_unique would clear it first
        }
        flat::Writer writer(mLarge ? mLarge.get() : mSmall, sizes);
        flat::copyValue(writer, original, self);
    }
    FlatCopy(const FlatCopy&) = delete;
    FlatCopy& operator=(const FlatCopy&) = delete;

  private:
    std::unique_ptr<std::byte[]> mLarge;
    alignas(flat::kAlignment) std::byte mSmall[kSmall];  // last: a sanitizer sees what leaves it
};

}  // namespace camInfosync
