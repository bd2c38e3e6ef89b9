#include "core/space/storage_category.h"

namespace pellwin {

std::string_view rawValue(StorageCategory category) {
  switch (category) {
    case StorageCategory::appData: return "appData";
    case StorageCategory::developer: return "developer";
    case StorageCategory::yourFiles: return "yourFiles";
    case StorageCategory::system: return "system";
    case StorageCategory::other: return "other";
  }
  return "";
}

std::optional<StorageCategory> storageCategoryFromRawValue(std::string_view raw) {
  for (auto category : {StorageCategory::appData, StorageCategory::developer,
                        StorageCategory::yourFiles, StorageCategory::system,
                        StorageCategory::other}) {
    if (rawValue(category) == raw) return category;
  }
  return std::nullopt;
}

}  // namespace pellwin
