#include "Tallyfoot/Platform/Posix/PosixKeyedArchiver.h"

#include "Tallyfoot/Platform/Posix/BinaryPropertyList.h"
#include "Tallyfoot/Platform/Posix/PosixPropertyLists.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>

namespace tallyfoot {

namespace {

using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using binarypropertylist::uniqueID;
using binarypropertylist::uniqueIDOf;

constexpr const char* archiverName = "NSKeyedArchiver";
constexpr std::int64_t archiveVersion = 100000;
constexpr const char* nil = "$null";

// The platform keeps names that begin with a dollar sign for itself and doubles those of others.
std::string fieldKey(const std::string& key) { return key.starts_with('$') ? '$' + key : key; }

class Writer {
public:
    std::string write(const Coder& root) {
        addObject(root);
        return finished();
    }

    std::string write(const std::vector<Coder>& root) {
        const auto self = reserve();
        Array elements;
        for (const auto& element : root) elements.push_back(uniqueID(addObject(element)));
        objects_[self].value =
            Dictionary{{"NS.objects", {std::move(elements)}}, {"$class", uniqueID(addClass("NSArray"))}};
        return finished();
    }

private:
    std::uint32_t reserve() {
        objects_.emplace_back();
        return static_cast<std::uint32_t>(objects_.size() - 1);
    }

    // One entry for each text and each class, whoever names it.
    std::uint32_t addOnce(std::map<std::string, std::uint32_t>& known, const std::string& name, PropertyList value) {
        if (const auto found = known.find(name); found != known.end()) return found->second;
        const auto self = reserve();
        objects_[self] = std::move(value);
        known.emplace(name, self);
        return self;
    }

    std::uint32_t addText(const std::string& text) {
        // The one text that would read back as nothing goes as an object instead.
        if (text == nil)
            return addOnce(texts_, text,
                           {Dictionary{{"NS.string", {text}}, {"$class", uniqueID(addClass("NSString"))}}});
        return addOnce(texts_, text, {text});
    }

    std::uint32_t addClass(const std::string& name) {
        return addOnce(classes_, name,
                       {Dictionary{{"$classname", {name}}, {"$classes", {Array{{name}, {std::string("NSObject")}}}}}});
    }

    std::uint32_t addObject(const Coder& object) {
        const auto self = reserve();
        Dictionary fields;
        for (const auto& [key, text] : object.fields()) fields.try_emplace(fieldKey(key), uniqueID(addText(text)));
        fields["$class"] = uniqueID(addClass(object.className()));
        objects_[self].value = std::move(fields);
        return self;
    }

    std::string finished() {
        return binarypropertylist::encoded({Dictionary{{"$version", {archiveVersion}},
                                                       {"$archiver", {std::string(archiverName)}},
                                                       {"$top", {Dictionary{{"root", uniqueID(1)}}}},
                                                       {"$objects", {std::move(objects_)}}}});
    }

    Array objects_{PropertyList{std::string(nil)}};
    std::map<std::string, std::uint32_t> texts_;
    std::map<std::string, std::uint32_t> classes_;
};

template <class Type>
const Type* entry(const Dictionary& dictionary, std::string_view key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : found->second.as<Type>();
}

// Follows ids one step at a time, so that ids in a circle do no harm.
class Reader {
public:
    // False for what is no keyed archive.
    bool open(std::string_view data) {
        auto list = PosixPropertyLists().propertyList(data);
        if (!list) return false;
        list_ = *std::move(list);
        const auto* archive = list_.as<Dictionary>();
        if (archive == nullptr) return false;
        const auto* archiver = entry<std::string>(*archive, "$archiver");
        const auto* top = entry<Dictionary>(*archive, "$top");
        objects_ = entry<Array>(*archive, "$objects");
        if (archiver == nullptr || *archiver != archiverName || top == nullptr || objects_ == nullptr) return false;
        const auto root = top->find("root");
        root_ = root == top->end() ? nullptr : object(root->second);
        return root_ != nullptr;
    }

    std::optional<Coder> rootObject() const { return decoded(*root_); }

    std::optional<std::vector<Coder>> rootArray() const {
        const auto* elements = entry<Array>(*root_, "NS.objects");
        if (elements == nullptr || !isOfClass(*root_, "NSArray")) return std::nullopt;
        std::vector<Coder> objects;
        for (const auto& element : *elements) {
            const auto* fields = object(element);
            auto coder = fields == nullptr ? std::nullopt : decoded(*fields);
            if (!coder) return std::nullopt;
            objects.push_back(*std::move(coder));
        }
        return objects;
    }

private:
    const PropertyList* target(const PropertyList& reference) const {
        const auto index = uniqueIDOf(reference);
        return index && *index < objects_->size() ? &(*objects_)[*index] : nullptr;
    }

    const Dictionary* object(const PropertyList& reference) const {
        const auto* found = target(reference);
        return found == nullptr ? nullptr : found->as<Dictionary>();
    }

    const Dictionary* classOf(const Dictionary& fields) const {
        const auto reference = fields.find("$class");
        return reference == fields.end() ? nullptr : object(reference->second);
    }

    bool isOfClass(const Dictionary& fields, std::string_view name) const {
        const auto isName = [name](const std::string* text) { return text != nullptr && *text == name; };
        const auto* type = classOf(fields);
        if (type == nullptr) return false;
        if (isName(entry<std::string>(*type, "$classname"))) return true;
        const auto* names = entry<Array>(*type, "$classes");
        return names != nullptr && std::any_of(names->begin(), names->end(), [&](const PropertyList& one) {
                   return isName(one.as<std::string>());
               });
    }

    std::optional<Coder> decoded(const Dictionary& fields) const {
        const auto* type = classOf(fields);
        const auto* name = type == nullptr ? nullptr : entry<std::string>(*type, "$classname");
        if (name == nullptr || isOfClass(fields, "NSArray")) return std::nullopt;
        Coder coder(*name);
        for (const auto& [key, value] : fields) {
            if (key.starts_with('$') && !key.starts_with("$$")) continue;
            if (auto text = this->text(value)) coder.encode(*std::move(text), key.substr(key.starts_with('$') ? 1 : 0));
        }
        return coder;
    }

    // A text stands as a plain entry or as an object around one; everything else is none.
    std::optional<std::string> text(const PropertyList& reference) const {
        const auto* found = target(reference);
        if (found == nullptr || found == objects_->data()) return std::nullopt;
        if (const auto* plain = found->as<std::string>()) return *plain == nil ? std::nullopt : std::optional(*plain);
        const auto* fields = found->as<Dictionary>();
        if (fields == nullptr || !isOfClass(*fields, "NSString")) return std::nullopt;
        const auto content = fields->find("NS.string");
        if (content == fields->end()) return std::nullopt;
        const auto* inner = target(content->second) == nullptr ? &content->second : target(content->second);
        const auto* plain = inner->as<std::string>();
        return plain == nullptr ? std::nullopt : std::optional(*plain);
    }

    PropertyList list_;
    const Array* objects_ = nullptr;
    const Dictionary* root_ = nullptr;
};

} // namespace

std::string PosixKeyedArchiver::archivedData(const Coder& root) const { return Writer().write(root); }

std::string PosixKeyedArchiver::archivedData(const std::vector<Coder>& rootArray) const {
    return Writer().write(rootArray);
}

std::optional<Coder> PosixKeyedArchiver::unarchivedObject(std::string_view data) const {
    Reader reader;
    return reader.open(data) ? reader.rootObject() : std::nullopt;
}

std::optional<std::vector<Coder>> PosixKeyedArchiver::unarchivedArray(std::string_view data) const {
    Reader reader;
    return reader.open(data) ? reader.rootArray() : std::nullopt;
}

} // namespace tallyfoot
