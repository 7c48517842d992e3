#pragma once

#include "Tallyfoot/Platform/Bundle.h"
#include "Tallyfoot/Platform/PropertyLists.h"

#include <memory>
#include <string>

namespace tallyfoot {

// A folder as a bundle: its facts stand in Info.plist, its resources at its top or in Resources/.
class PosixBundle final : public Bundle {
public:
    PosixBundle(std::string path, std::shared_ptr<const PropertyLists> propertyLists);
    ~PosixBundle() override;

    std::optional<std::string> information(std::string_view key) const override;
    std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const override;

    const std::string& path() const noexcept { return path_; }

private:
    struct Information;
    std::string path_;
    std::shared_ptr<const PropertyLists> propertyLists_;
    std::unique_ptr<Information> information_;
};

// The main bundle is the folder that $TALLYFOOT_MAIN_BUNDLE names, else the executable's. Its
// frameworks are the folders Frameworks/*.framework in it, in the order of their names.
class PosixBundles final : public Bundles {
public:
    explicit PosixBundles(std::shared_ptr<const PropertyLists> propertyLists);

    const PosixBundle& mainBundle() const override { return mainBundle_; }

    std::vector<std::shared_ptr<const Bundle>> allFrameworks() const override;

    // What no other application has: the main bundle's folder if the variable names it or an Info.plist makes
    // it one; else the executable's path, since others may lie in its folder.
    std::string applicationPath() const;

private:
    std::shared_ptr<const PropertyLists> propertyLists_;
    PosixBundle mainBundle_;
};

} // namespace tallyfoot
