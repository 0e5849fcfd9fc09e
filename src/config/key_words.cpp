#include "config/key_words.h"

#include <array>
#include <cstddef>

namespace zant::kor {

namespace {

constexpr size_t totalLength() {
    size_t length = 0;
    for (std::string_view text : KEY_WORDS) length += text.size();
    return length;
}

struct Alphabet {
    std::array<uint8_t, 256> classOf{};  // 0: a character that no word holds
    size_t size = 1;
};

constexpr Alphabet makeAlphabet() {
    Alphabet alphabet;
    for (std::string_view text : KEY_WORDS) {
        for (const char c : text) {
            uint8_t& characterClass = alphabet.classOf[static_cast<unsigned char>(c)];
            if (characterClass == 0) characterClass = static_cast<uint8_t>(alphabet.size++);
        }
    }
    return alphabet;
}

constexpr Alphabet ALPHABET = makeAlphabet();
constexpr size_t MAX_STATES = totalLength() + 1;

// The automaton of Aho and Corasick over KEY_WORDS: one table look-up a character, and at each state the set of
// words that end there. Built at the first load, read-only afterwards.
class Automaton {
public:
    Automaton() {
        for (size_t i = 0; i < KEY_WORDS.size(); ++i) insert(KEY_WORDS[i], static_cast<KeyWord>(i));
        close();
    }

    uint16_t next(uint16_t state, char c) const noexcept {
        return m_next[state][ALPHABET.classOf[static_cast<unsigned char>(c)]];
    }
    bool ends(uint16_t state) const noexcept { return m_ends[state]; }
    const KeyWordSet& wordsAt(uint16_t state) const noexcept { return m_words[state]; }

private:
    void insert(std::string_view text, KeyWord word) {
        uint16_t state = 0;
        for (const char c : text) {
            uint16_t& next = m_next[state][ALPHABET.classOf[static_cast<unsigned char>(c)]];
            if (next == 0) next = m_states++;
            state = next;
        }
        m_words[state].add(word);
        m_ends[state] = true;
    }

    // Breadth first: a missing transition is that of the longest proper suffix which is also a prefix of a word.
    void close() {
        std::array<uint16_t, MAX_STATES> queue{};
        std::array<uint16_t, MAX_STATES> suffix{};
        size_t head = 0;
        size_t tail = 0;
        for (const uint16_t child : m_next[0]) {
            if (child != 0) queue[tail++] = child;
        }
        while (head < tail) {
            const uint16_t state = queue[head++];
            m_words[state].add(m_words[suffix[state]]);
            m_ends[state] = m_ends[state] || m_ends[suffix[state]];
            for (size_t c = 0; c < ALPHABET.size; ++c) {
                uint16_t& next = m_next[state][c];
                const uint16_t fallback = m_next[suffix[state]][c];
                if (next == 0) {
                    next = fallback;
                } else {
                    suffix[next] = fallback;
                    queue[tail++] = next;
                }
            }
        }
    }

    std::array<std::array<uint16_t, ALPHABET.size>, MAX_STATES> m_next{};
    std::array<KeyWordSet, MAX_STATES> m_words{};
    std::array<bool, MAX_STATES> m_ends{};
    uint16_t m_states = 1;
};

const Automaton& automaton() {
    static const Automaton instance;
    return instance;
}

}  // namespace

KeyWordSearch searchKeyWords(uint16_t state, std::string_view piece) noexcept {
    static const Automaton& table = automaton();
    KeyWordSearch search{state, {}};
    for (const char c : piece) {
        search.state = table.next(search.state, c);
        if (table.ends(search.state)) search.found.add(table.wordsAt(search.state));
    }
    return search;
}

}  // namespace zant::kor
