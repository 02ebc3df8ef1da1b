#include "batch/batch.h"

namespace tessarine {

void cBatch::TakeSelectedFolder() {
    if (!platform_.folderExists(selectedFolder)) return;
    txtDestination = selectedFolder;
    platform_.changed("txtDestination");
}

}  // namespace tessarine
