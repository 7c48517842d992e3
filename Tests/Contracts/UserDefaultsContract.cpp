#include "Contracts/Implementation.h"
#include "Support/MemoryUserDefaults.h"
#include "Support/TemporaryFolder.h"

#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"
#include "Tallyfoot/Platform/Posix/PosixUserDefaults.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace tallyfoot::testing {

namespace {

using namespace std::string_literals;

class UserDefaultsContract : public ::testing::TestWithParam<Implementation<UserDefaults>> {
protected:
    std::shared_ptr<UserDefaults> defaults_ = GetParam().make();
};

PropertyList text(std::string characters) { return {std::move(characters)}; }

PropertyList deepList() {
    return {PropertyList::Dictionary{
        {"texts", {PropertyList::Array{text("one"), text("zwei — 二"), text("")}}},
        {"bytes", {PropertyList::Data{"\0\1\xFF"s}}},
        {"numbers", {PropertyList::Array{{std::int64_t{-1}}, {0.1}, {true}}}},
        {"empty", {PropertyList::Dictionary{}}},
    }};
}

// One value of each kind, every two different.
std::vector<PropertyList> values() {
    return {{std::int64_t{7}},
            {std::int64_t{-8}},
            {2.5},
            {false},
            {true},
            text("a text, 100"),
            {PropertyList::Data{"7"s}},
            {PropertyList::Array{text("x")}},
            deepList()};
}

TEST_P(UserDefaultsContract, AnUnknownKeyHasNoValue) {
    EXPECT_EQ(defaults_->integer("key"), 0);
    EXPECT_EQ(defaults_->real("key"), 0);
    EXPECT_EQ(defaults_->object("key"), std::nullopt);
}

TEST_P(UserDefaultsContract, IntegersAreExact) {
    for (const auto number : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{9007199254740993},
                              std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}) {
        defaults_->setInteger("key", number);
        EXPECT_EQ(defaults_->integer("key"), number);
        EXPECT_EQ(defaults_->object("key"), PropertyList{number});
    }
}

TEST_P(UserDefaultsContract, RealsAreExact) {
    for (const auto number : {0.1, -1.5e300, 1709820309.123, 5e-324, std::numeric_limits<double>::infinity()}) {
        defaults_->setReal("key", number);
        EXPECT_EQ(defaults_->real("key"), number);
        EXPECT_EQ(defaults_->object("key"), PropertyList{number});
    }
    defaults_->setReal("key", -0.0);
    EXPECT_TRUE(std::signbit(defaults_->real("key")));
    defaults_->setReal("key", std::nan(""));
    EXPECT_TRUE(std::isnan(defaults_->real("key")));
}

TEST_P(UserDefaultsContract, EveryKindOfValueReadsBackAsItWasStored) {
    for (const auto& value : values()) {
        defaults_->setObject("key", value);
        EXPECT_EQ(defaults_->object("key"), value);
    }
}

TEST_P(UserDefaultsContract, AValueTakesThePlaceOfOneOfAnyOtherKind) {
    for (const auto& former : values())
        for (const auto& latter : values()) {
            defaults_->setObject("key", former);
            defaults_->setObject("key", latter);
            ASSERT_EQ(defaults_->object("key"), latter);
        }
}

TEST_P(UserDefaultsContract, AnyValueCanBeRemovedAndSetAgain) {
    for (const auto& value : values()) {
        defaults_->setObject("key", value);
        defaults_->remove("key");
        EXPECT_EQ(defaults_->object("key"), std::nullopt);
        EXPECT_EQ(defaults_->integer("key"), 0);
        EXPECT_EQ(defaults_->real("key"), 0);
    }
    for (const auto& value : values()) {
        defaults_->setObject("key", value);
        EXPECT_EQ(defaults_->object("key"), value);
        defaults_->remove("key");
    }
}

TEST_P(UserDefaultsContract, RemovingAnUnknownKeyDoesNothing) {
    defaults_->remove("key");
    EXPECT_EQ(defaults_->object("key"), std::nullopt);
    EXPECT_TRUE(defaults_->synchronize());
}

TEST_P(UserDefaultsContract, NumbersReadAsEachOther) {
    defaults_->setReal("key", -2.9);
    EXPECT_EQ(defaults_->integer("key"), -2);
    defaults_->setInteger("key", 3);
    EXPECT_EQ(defaults_->real("key"), 3.0);
    defaults_->setObject("key", {true});
    EXPECT_EQ(defaults_->integer("key"), 1);
    EXPECT_EQ(defaults_->real("key"), 1.0);
}

TEST_P(UserDefaultsContract, ATextReadsAsItsLeadingDigits) {
    defaults_->setObject("key", text(" 42 events"));
    EXPECT_EQ(defaults_->integer("key"), 42);
    defaults_->setObject("key", text("-1.5e1s"));
    EXPECT_EQ(defaults_->real("key"), -15.0);
    defaults_->setObject("key", text("none"));
    EXPECT_EQ(defaults_->integer("key"), 0);
}

TEST_P(UserDefaultsContract, WhatIsNoNumberReadsAsZero) {
    defaults_->setObject("key", deepList());
    EXPECT_EQ(defaults_->integer("key"), 0);
    EXPECT_EQ(defaults_->real("key"), 0);
}

TEST_P(UserDefaultsContract, KeysAreToldApartWhateverTheyAreMadeOf) {
    const std::vector<std::string> keys{"",
                                        "key",
                                        "Key",
                                        "key ",
                                        "k/e/y",
                                        "..",
                                        ".",
                                        ".lock",
                                        "number",
                                        "numbers",
                                        ".numbers.new",
                                        "key.plist",
                                        "%6Bey",
                                        "k%65y",
                                        "ключ",
                                        "\xFF\n",
                                        "key\0one"s,
                                        "key\0two"s,
                                        std::string(84, 'k'),
                                        std::string(85, 'k'),
                                        std::string(100, 'l'),
                                        std::string(101, 'l'),
                                        std::string(249, 'm')};
    for (const bool areNumbers : {true, false}) {
        for (std::size_t index = 0; index < keys.size(); ++index) {
            if (areNumbers)
                defaults_->setInteger(keys[index], static_cast<std::int64_t>(index) + 1);
            else
                defaults_->setObject(keys[index], text(std::to_string(index + 1)));
        }
        for (std::size_t index = 0; index < keys.size(); ++index)
            EXPECT_EQ(defaults_->integer(keys[index]), static_cast<std::int64_t>(index) + 1) << keys[index];
    }
}

TEST_P(UserDefaultsContract, AVeryLongKeyHasItsValueAtLeastForTheLifeOfTheProcess) {
    const std::string key(5000, 'k');
    defaults_->setInteger(key, 7);
    EXPECT_EQ(defaults_->integer(key), 7);
    defaults_->setObject(key, text("seven"));
    EXPECT_EQ(defaults_->object(key), text("seven"));
    defaults_->remove(key);
    EXPECT_EQ(defaults_->object(key), std::nullopt);
}

TEST_P(UserDefaultsContract, HoldsMoreNumbersThanAnybodyNeeds) {
    for (int number = 0; number < 600; ++number) defaults_->setInteger("key " + std::to_string(number), number);
    for (int number = 0; number < 600; ++number) ASSERT_EQ(defaults_->integer("key " + std::to_string(number)), number);
    EXPECT_TRUE(defaults_->synchronize());
}

TEST_P(UserDefaultsContract, SynchronizeTellsThatAllIsKept) {
    EXPECT_TRUE(defaults_->synchronize());
    for (const auto& value : values()) {
        defaults_->setObject("key", value);
        EXPECT_TRUE(defaults_->synchronize());
    }
}

TEST_P(UserDefaultsContract, AReaderFindsSomeValueWhileItChangesBetweenKinds) {
    constexpr int rounds = 300;
    defaults_->setInteger("key", 1);
    std::atomic<bool> isDone{false};
    std::atomic<int> bad{0};
    std::vector<std::thread> readers;
    for (int index = 0; index < 2; ++index)
        readers.emplace_back([&] {
            while (!isDone) {
                const auto value = defaults_->object("key");
                const bool isSound = value == PropertyList{std::int64_t{1}} || value == PropertyList{2.0}
                                     || value == text("3 is a text");
                if (!isSound) ++bad;
            }
        });
    for (int round = 0; round < rounds; ++round) {
        defaults_->setReal("key", 2.0);
        defaults_->setObject("key", text("3 is a text"));
        defaults_->setInteger("key", 1);
    }
    isDone = true;
    for (auto& reader : readers) reader.join();
    EXPECT_EQ(bad, 0);
}

TEST_P(UserDefaultsContract, SeveralThreadsMayWriteAtOnce) {
    std::vector<std::thread> writers;
    for (int index = 0; index < 4; ++index)
        writers.emplace_back([&, index] {
            const auto own = "own " + std::to_string(index);
            for (int round = 0; round < 100; ++round) {
                defaults_->setInteger(own, round);
                defaults_->setInteger("shared", index);
                if (round % 10 == 0) defaults_->setObject("shared", text(std::to_string(index)));
            }
        });
    for (auto& writer : writers) writer.join();
    for (int index = 0; index < 4; ++index) EXPECT_EQ(defaults_->integer("own " + std::to_string(index)), 99);
    const auto shared = defaults_->integer("shared");
    EXPECT_TRUE(defaults_->object("shared"));
    EXPECT_GE(shared, 0);
    EXPECT_LT(shared, 4);
}

TEST_P(UserDefaultsContract, ACrashHooksTextsReadBackAsADictionary) {
    for (const auto& former : values()) {
        defaults_->setObject("crash", former);
        const auto store = defaults_->makeSignalSafeStore("crash");
        ASSERT_TRUE(store);
        const std::array<SignalSafeStore::Text, 4> texts{{{"evtId", "1"},
                                                          {"crashreason", "a < b && \"c\" > 'd'\r\n — ✓ 𝄞 "},
                                                          {"pgName", ""},
                                                          {"a&b", std::string_view("  spaces\t ")}}};
        EXPECT_TRUE(store->store(texts));
        PropertyList::Dictionary expected;
        for (const auto& [key, value] : texts) expected[std::string(key)] = text(std::string(value));
        EXPECT_EQ(defaults_->object("crash"), PropertyList{expected});
        EXPECT_TRUE(store->store({}));
        EXPECT_EQ(defaults_->object("crash"), PropertyList{PropertyList::Dictionary{}});
    }
}

// Owns the folder of its store.
class InTemporaryFolder final : public UserDefaults {
public:
    std::int64_t integer(std::string_view key) const override { return store_.integer(key); }
    double real(std::string_view key) const override { return store_.real(key); }
    std::optional<PropertyList> object(std::string_view key) const override { return store_.object(key); }
    void setInteger(std::string_view key, std::int64_t value) override { store_.setInteger(key, value); }
    void setReal(std::string_view key, double value) override { store_.setReal(key, value); }
    void setObject(std::string_view key, const PropertyList& value) override { store_.setObject(key, value); }
    void remove(std::string_view key) override { store_.remove(key); }
    bool synchronize() override { return store_.synchronize(); }
    std::unique_ptr<SignalSafeStore> makeSignalSafeStore(std::string_view key) override {
        return store_.makeSignalSafeStore(key);
    }

private:
    TemporaryFolder folder_;
    PosixUserDefaults store_{folder_ / "store", std::make_shared<PosixPropertyLists>()};
};

INSTANTIATE_TEST_SUITE_P(
    All, UserDefaultsContract,
    ::testing::Values(Implementation<UserDefaults>{"Posix", [] { return std::make_shared<InTemporaryFolder>(); }},
                      Implementation<UserDefaults>{"Memory", [] { return std::make_shared<MemoryUserDefaults>(); }}),
    nameOfImplementation);

} // namespace

} // namespace tallyfoot::testing
