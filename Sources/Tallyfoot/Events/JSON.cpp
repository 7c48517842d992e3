#include "Tallyfoot/Events/JSON.h"

#include "Tallyfoot/Events/JSONReader.h"
#include "Tallyfoot/Events/JSONText.h"
#include "Tallyfoot/Events/JSONWriter.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>
#include <vector>

namespace tallyfoot::json {

namespace {

// Builds the tree of what is read.
class Tree {
public:
    void null() { place(nullptr); }

    void boolean(bool truth) { place(truth); }

    void integer(std::int64_t number) { place(number); }

    void unsignedInteger(std::uint64_t number) { place(number); }

    void real(double number) { place(number); }

    bool string(std::string_view text) {
        place(text);
        return true;
    }

    bool open(Container container) {
        open_.push_back(&place(container == Container::object ? nlohmann::json::object() : nlohmann::json::array()));
        return true;
    }

    void close() { open_.pop_back(); }

    bool key(std::string_view text) {
        const auto [member, isNew] = open_.back()->get_ref<nlohmann::json::object_t&>().emplace(text, nullptr);
        member_ = &member->second;
        return isNew;
    }

    nlohmann::json root;

private:
    nlohmann::json& place(nlohmann::json value) {
        if (open_.empty()) return root = std::move(value);
        if (auto* elements = open_.back()->get_ptr<nlohmann::json::array_t*>())
            return elements->emplace_back(std::move(value));
        return *member_ = std::move(value);
    }

    std::vector<nlohmann::json*> open_; // outermost first; only the innermost one grows
    nlohmann::json* member_ = nullptr;
};

// The keys of one object so far. Most objects have few, where looking at each beats hashing.
class Keys {
public:
    bool insert(std::string_view key) {
        if (!many_.empty()) return many_.emplace(key).second;
        if (std::find(few_.begin(), few_.end(), key) != few_.end()) return false;
        if (few_.empty()) few_.reserve(8);
        few_.emplace_back(key);
        if (few_.size() > 32) many_.insert(few_.begin(), few_.end());
        return true;
    }

private:
    std::vector<std::string> few_;
    std::unordered_set<std::string> many_;
};

// Writes what is read as compact text, without a tree in between.
class Compact {
public:
    explicit Compact(Writer& writer) : writer_(writer) {}

    void null() { scalar().null(); }

    void boolean(bool truth) { scalar().boolean(truth); }

    void integer(std::int64_t number) { scalar().integer(number); }

    void unsignedInteger(std::uint64_t number) { scalar().unsignedInteger(number); }

    void real(double number) { scalar().real(number); }

    bool string(std::string_view text) { return scalar().string(text); }

    bool open(Container container) {
        if (depth() < expected_.size() && container != expected_[depth()]) isArrayOfObjects_ = false;
        keys_.emplace_back();
        return writer_.open(container);
    }

    void close() {
        keys_.pop_back();
        writer_.close();
    }

    bool key(std::string_view text) { return keys_.back().insert(text) && writer_.key(text); }

    bool isArrayOfObjects() const { return isArrayOfObjects_; }

protected:
    std::size_t depth() const { return keys_.size(); }

    Writer& writer_;

private:
    Writer& scalar() {
        if (depth() < expected_.size()) isArrayOfObjects_ = false;
        return writer_;
    }

    static constexpr std::array expected_{Container::array, Container::object};
    std::vector<Keys> keys_; // of every open container, outermost first
    bool isArrayOfObjects_ = true;
};

// Writes an event's object, its custom data taken out of the text that holds it.
class Record : public Compact {
public:
    using Compact::Compact;

    bool key(std::string_view text) {
        const bool counts = Compact::key(text);
        isCustomData_ = counts && depth() == 1 && text == "custom";
        return counts;
    }

    bool string(std::string_view text) {
        if (!isCustomData_ || depth() != 1) return Compact::string(text);
        Compact array(writer_);
        hasCustomData_ = Reader(text, array).read(deepestLevel - 1) && array.isArrayOfObjects();
        return hasCustomData_;
    }

    bool hasCustomData() const { return hasCustomData_; }

private:
    bool isCustomData_ = false;
    bool hasCustomData_ = false;
};

bool appendScalar(Writer& writer, const nlohmann::json& value) {
    using Type = nlohmann::json::value_t;
    switch (value.type()) {
    case Type::null: writer.null(); return true;
    case Type::boolean: writer.boolean(value.get<bool>()); return true;
    case Type::number_integer: writer.integer(value.get<std::int64_t>()); return true;
    case Type::number_unsigned: writer.unsignedInteger(value.get<std::uint64_t>()); return true;
    case Type::number_float: return writer.real(value.get<double>());
    case Type::string: return writer.string(value.get_ref<const std::string&>());
    default: return false; // binary data and the mark of a failed parse are no JSON
    }
}

// Without recursion, so that no host's stack is too small. False where the value is no JSON.
bool append(Writer& writer, const nlohmann::json& root, int& levels) {
    struct Level {
        const nlohmann::json& container;
        nlohmann::json::const_iterator next;
    };

    std::vector<Level> open;
    levels = 0;
    for (const nlohmann::json* value = &root;;) {
        if (value->is_structured()) {
            if (open.size() == deepestLevel) return false;
            writer.open(value->is_object() ? Container::object : Container::array);
            open.push_back({*value, value->cbegin()});
            levels = std::max(levels, static_cast<int>(open.size()));
        } else if (!appendScalar(writer, *value)) {
            return false;
        }
        while (!open.empty() && open.back().next == open.back().container.cend()) {
            writer.close();
            open.pop_back();
        }
        if (open.empty()) return true;
        auto& innermost = open.back();
        if (innermost.container.is_object() && !writer.key(innermost.next.key())) return false;
        value = &*innermost.next++;
    }
}

} // namespace

std::optional<nlohmann::json> parse(std::string_view text) {
    Tree tree;
    if (!Reader(text, tree).read()) return std::nullopt;
    return std::move(tree.root);
}

std::optional<nlohmann::json> dictionary(std::string_view text) {
    auto value = parse(text);
    if (value && !value->is_object()) value.reset();
    return value;
}

std::optional<nlohmann::json> array(std::string_view text) {
    auto value = parse(text);
    const auto isObject = [](const nlohmann::json& element) { return element.is_object(); };
    if (value && !(value->is_array() && std::all_of(value->begin(), value->end(), isObject))) value.reset();
    return value;
}

std::optional<std::string> write(const nlohmann::json& value) {
    int levels = 0;
    return write(value, levels);
}

std::optional<std::string> write(const nlohmann::json& value, int& levels) {
    std::optional<std::string> text(std::in_place);
    Writer writer(*text);
    if (!append(writer, value, levels)) text.reset();
    return text;
}

std::string deEscapedCustomData(std::string_view text) {
    std::string compact;
    compact.reserve(text.size());
    Writer writer(compact);
    Record record(writer);
    if (!Reader(text, record).read() || !record.hasCustomData()) return std::string(text);
    return compact;
}

} // namespace tallyfoot::json
