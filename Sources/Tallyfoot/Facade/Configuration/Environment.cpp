#include "Tallyfoot/Facade/Configuration/Environment.h"

#include "Tallyfoot/Platform/Bundle.h"
#include "Tallyfoot/Platform/CancellationHold.h"
#include "Tallyfoot/Platform/Exclusive.h"
#include "Tallyfoot/Platform/PlatformServices.h"
#include "Tallyfoot/Platform/PropertyLists.h"

#include <algorithm>
#include <utility>

namespace tallyfoot {

namespace {

// "utilities", where the fixed upload address has "utility": the server knows both.
constexpr const char* uploadResource =
    "/qmx/tallyfootServer/businessareas/utilities/subjectareas/tallyfootServer/proxy/tallyfootUploadFiles";

std::optional<std::string> environmentFile(const Bundles& bundles) {
    for (const auto& framework : bundles.allFrameworks())
        if (auto path = framework->pathForResource("Environment", "plist")) return path;
    return std::nullopt;
}

// The bases count only if every one of them is a text.
const PropertyList::Dictionary* uploadBases(const PropertyList::Dictionary& environment) {
    const auto entry = environment.find("uploadBases");
    if (entry == environment.end()) return nullptr;
    const auto* bases = entry->second.as<PropertyList::Dictionary>();
    if (bases == nullptr) return nullptr;
    const bool areTexts = std::all_of(bases->begin(), bases->end(), [](const auto& base) {
        return base.second.template as<std::string>() != nullptr;
    });
    return areTexts ? bases : nullptr;
}

std::optional<std::string> resolved(const PropertyList::Dictionary& environment, Endpoint endpoint) {
    const auto* bases = uploadBases(environment);
    if (bases == nullptr) return std::nullopt;
    const auto base = bases->find(uploadBaseKey(endpoint));
    if (base == bases->end()) return std::nullopt;
    return "https://" + *base->second.as<std::string>() + uploadResource;
}

} // namespace

struct Environment::State {
    struct Fields {
        std::optional<PropertyList::Dictionary> environmentDict;
        std::optional<Endpoint> endpoint;
        std::string uploadPath = "no such path";
    };

    std::shared_ptr<Bundles> bundles;
    std::shared_ptr<PropertyLists> propertyLists;
    Exclusive<Fields> fields;

    void update() {
        const CancellationHold hold; // an open file lets no cancellation through
        const auto file = environmentFile(*bundles);
        if (!file) return;
        auto dictionary = propertyLists->dictionary(*file);
        // The endpoint is read only now: of two changes at once, the later one decides the path.
        fields.modify([&](Fields& current) {
            current.environmentDict.swap(dictionary);
            if (!current.environmentDict || !current.endpoint) return;
            if (auto path = resolved(*current.environmentDict, *current.endpoint))
                current.uploadPath = *std::move(path);
        });
    }
};

Environment::Environment() : Environment(defaultPlatformServices()) {}

Environment::Environment(const PlatformServices& services) : state_(std::make_unique<State>()) {
    state_->bundles = services.bundles;
    state_->propertyLists = services.propertyLists;
}

Environment::~Environment() = default;

std::optional<Endpoint> Environment::endpoint() const {
    return state_->fields.read([](const State::Fields& fields) { return fields.endpoint; });
}

void Environment::setEndpoint(std::optional<Endpoint> endpoint) {
    if (endpoint) endpoint = fromRawValue<Endpoint>(static_cast<int>(*endpoint));
    state_->fields.modify([&](State::Fields& fields) { fields.endpoint = endpoint; });
    state_->update();
}

std::string Environment::uploadPath() const {
    return state_->fields.read([](const State::Fields& fields) { return fields.uploadPath; });
}

void Environment::setUploadPath(std::string path) {
    state_->fields.modify([&](State::Fields& fields) { fields.uploadPath.swap(path); });
}

std::optional<PropertyList::Dictionary> Environment::environmentDict() const {
    return state_->fields.read([](const State::Fields& fields) { return fields.environmentDict; });
}

} // namespace tallyfoot
