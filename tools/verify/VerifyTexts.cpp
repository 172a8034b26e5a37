#include "VerifyTexts.h"

#include "Offload/PathSize.h"
#include "Platform/Text.h"

#include <fmt/format.h>

namespace slatewise::tool {

std::string VerifyTexts::verdict(const Verify::Result& result, std::string_view tree) const {
    const auto size = PathSize::format(result.bytesRead, shared.language());
    if (result.isAllEqual() && result.filesEqual == 1) {
        return shared.isTurkish()
                   ? fmt::format("{}: tek dosya yerinde ve aynı, {}", tree, size)
                   : fmt::format("{}: the only file is there and the same, {}", tree, size);
    }
    if (result.isAllEqual()) {
        return shared.isTurkish() ? fmt::format("{}: {} dosyanın hepsi yerinde ve aynı, {}", tree,
                                                result.filesEqual, size)
                                  : fmt::format("{}: all {} files are there and the same, {}", tree,
                                                result.filesEqual, size);
    }
    if (shared.isTurkish())
        return fmt::format("{}: {} FARK, {} dosya aynı, {}", tree, result.differences,
                           result.filesEqual, size);
    return fmt::format("{}: {} {}, {} {} the same, {}", tree, result.differences,
                       result.differences == 1 ? "DIFFERENCE" : "DIFFERENCES", result.filesEqual,
                       result.filesEqual == 1 ? "file is" : "files are", size);
}

std::string VerifyTexts::onOtherDisk(std::string_view tree) const {
    return shared.isTurkish()
               ? fmt::format("Listelerinin yazıldığı diskte değil, başka bir diskte: {}", tree)
               : fmt::format("Not on the disk that its lists were written for, but on another: {}",
                             tree);
}

std::string VerifyTexts::fromMemory(std::string_view tree) const {
    return shared.isTurkish()
               ? fmt::format(
                     "Bu diskin dosya sistemi boşaltamadığımız bir bellek tutuyor; okunanlar "
                     "oradan gelmiş olabilir: {}",
                     tree)
               : fmt::format(
                     "This disk's file system keeps copies in memory that we may not empty; "
                     "what was read may come from there: {}",
                     tree);
}

std::string VerifyTexts::keptInMemory(const Verify::Result& result, std::string_view tree) const {
    std::string names;
    for (const auto& path : result.keptInMemory)
        names += (names.empty() ? "" : ", ") + Text::displayable(path);
    if (result.filesKeptInMemory > static_cast<int>(result.keptInMemory.size()))
        names += ", …";
    return shared.isTurkish()
               ? fmt::format("{}: bellekten çıkarılamadığı için okunanı oradan gelmiş olabilecek "
                             "dosyalar ({}): {}",
                             tree, result.filesKeptInMemory, names)
               : fmt::format("{}: files that stay in memory, so that what was read may come from "
                             "there ({}): {}",
                             tree, result.filesKeptInMemory, names);
}

std::string VerifyTexts::nameLeftOut(std::string_view name) const {
    return shared.isTurkish()
               ? fmt::format("Adını listenin tutamadığı bir dosya listeye girmedi: {}", name)
               : fmt::format("Left out of the list, which cannot hold its name: {}", name);
}

std::string VerifyTexts::noGeneration() const {
    return shared.isTurkish() ? "Fark olduğu için listeye nesil eklenmedi."
                              : "No generation was added, since there are differences.";
}

} // namespace slatewise::tool
