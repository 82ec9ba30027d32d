#pragma once

// Everything a host needs of the library.

#include "api/FolderNameApi.h"
#include "api/GalleryApi.h"
#include "db/CppSQLite3.h"
#include "db/DBTools.h"
#include "db/LibraryCheck.h"
#include "db/LibrarySnapshot.h"
#include "folders/CQFolder.h"
#include "folders/CQFolderCtrl.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "platform/os/Memory.h"
#include "platform/os/Places.h"
#include "service/MutexLocker.h"
#include "service/QFCLibCallbackParam.h"
#include "service/QFCLibraryManager.h"
