// tests/liveries/livery_text_test.cpp
#include "liveries/livery_text.h"

#include <random>
#include <sstream>

#include <gmock/gmock.h>
#include <pugixml.hpp>

namespace {

using Texts = std::vector<std::string>;

Livery livery(std::string title, std::string atcid = {}, bool cargo = false) {
    return {"KLM", "A320", std::move(title), std::move(atcid), 1, cargo};
}

std::string textOf(const std::list<Livery>& liveries) {
    return liveriesText({{"author", "we"}, {"date", "Mon <1> & \"2\""}}, liveries);
}

// The XML library's answers to the same questions.

void addInfo(pugi::xml_node meta, const char* name, const char* value) {
    pugi::xml_node info = meta.append_child("info");
    info.append_attribute("name") = name;
    info.append_attribute("value") = value;
}

std::string textByLibrary(const std::list<Livery>& liveries) {
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("root");
    const pugi::xml_node meta = root.append_child("meta");
    addInfo(meta, "author", "we");
    addInfo(meta, "date", "Mon <1> & \"2\"");
    pugi::xml_node section = root.append_child("liveries");
    for (const Livery& livery : liveries) {
        pugi::xml_node element = section.append_child("liv");
        element.append_attribute("airl") = livery.airl.c_str();
        element.append_attribute("type") = livery.type.c_str();
        if (livery.cargo) {
            element.append_attribute("cargo") = true;
        }
        element.append_attribute("title") = livery.title.c_str();
        if (!livery.atcid.empty()) {
            element.append_attribute("atcid") = livery.atcid.c_str();
        }
    }
    std::ostringstream stream;
    document.save(stream);
    return stream.str();
}

Texts readByLibrary(const std::string& text) {
    pugi::xml_document document;
    if (!document.load_buffer(text.data(), text.size())) {
        return {"refused"};
    }
    Texts texts;
    for (const pugi::xml_node element : document.child("root").child("liveries").children("liv")) {
        for (const char* key : {"airl", "type", "title", "atcid"}) {
            texts.emplace_back(element.attribute(key).value());
        }
        texts.emplace_back(element.attribute("cargo").as_bool() ? "cargo" : "passengers");
    }
    return texts;
}

/// "left to the library" where the text has not the form.
Texts readHere(std::string text) {
    const auto liveries = liveriesInText(text);
    if (!liveries) {
        return {"left to the library"};
    }
    Texts texts;
    for (const LiveryView& one : *liveries) {
        for (const std::string_view value : {one.airl, one.type, one.title, one.atcid}) {
            texts.emplace_back(value);
        }
        texts.emplace_back(one.cargo ? "cargo" : "passengers");
    }
    return texts;
}

bool isLeft(const Texts& texts) {
    return texts == Texts{"left to the library"};
}

std::string randomText(std::mt19937& random, std::string_view characters) {
    std::string text;
    for (std::size_t size = random() % 30; size > 0; --size) {
        text += characters[random() % characters.size()];
    }
    return text;
}

std::list<Livery> randomLiveries(std::mt19937& random, std::string_view characters) {
    std::list<Livery> liveries;
    for (std::size_t size = 1 + random() % 4; size > 0; --size) {
        liveries.push_back({randomText(random, characters), randomText(random, characters),
                            randomText(random, characters), random() % 2 == 0 ? "" : randomText(random, characters), 1,
                            random() % 3 == 0});
    }
    return liveries;
}

constexpr std::string_view printable = "ab &<>\"';=/#x9amp;lt;\xC3\xBC\xFF\x7F";

} // namespace

TEST(LiveryText, hasTheLibrarysBytes) {
    std::string every;
    for (int c = 0; c < 256; ++c) {
        every.assign(1, static_cast<char>(c)).append("x");
        const std::list<Livery> liveries{livery(every, every), livery("x" + every, "", true)};
        EXPECT_EQ(textOf(liveries), textByLibrary(liveries)) << c;
    }
    EXPECT_EQ(textOf({}), textByLibrary({}));
}

TEST(LiveryText, ofAnyLiveriesHasTheLibrarysBytesAndIsReadAsByIt) {
    std::mt19937 random(3);
    for (int round = 0; round < 3000; ++round) {
        const std::list<Livery> liveries = randomLiveries(random, printable);
        const std::string text = textOf(liveries);
        ASSERT_EQ(text, textByLibrary(liveries));
        ASSERT_EQ(readHere(text), readByLibrary(text)) << text;
    }
}

TEST(LiveryText, isReadAsByTheLibraryOrLeftToItWhateverIsChanged) {
    std::mt19937 random(4);
    int taken = 0;
    int left = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text = textOf(randomLiveries(random, printable));
        const std::size_t at = random() % text.size();
        const std::string added = randomText(random, "<>\"'&;/= \t\n!-liv?[]\x01").substr(0, random() % 3);
        text.replace(at, random() % 3, added);
        const Texts here = readHere(text);
        ++(isLeft(here) ? left : taken);
        if (!isLeft(here)) {
            ASSERT_EQ(here, readByLibrary(text)) << text;
        }
    }
    EXPECT_GT(taken, 1000);
    EXPECT_GT(left, 1000);
}

TEST(LiveryText, cutShortAnywhereIsLeftToTheLibrary) {
    const std::string text = textOf({livery("One & \"only\"", "PH-ABC", true), livery("Two")});
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_TRUE(isLeft(readHere(text.substr(0, size)))) << size;
    }
    EXPECT_FALSE(isLeft(readHere(text)));
    EXPECT_TRUE(isLeft(readHere(text + "\n")));
}

TEST(LiveryText, withoutLiveriesOrWithControlCharactersIsLeftToTheLibrary) {
    EXPECT_TRUE(isLeft(readHere(textOf({}))));
    EXPECT_TRUE(isLeft(readHere(textOf({livery("a tab\there")}))));
    EXPECT_TRUE(isLeft(readHere("")));
}
