"""The shared library shows its interface and nothing else: not what it is built from, not what it links to."""
import re
import subprocess
import sys

INTERFACE = re.compile(
    r"""^(
      C(Q|Obj|Obj?List|ObArray|String|Runtime|CmdTarget|Document|View|DumpContext|Archive|DBStringHelper)\w*
    | C\w*Exception | CLibTagsMgr | CppSQLite3\w* | DBTools(Internal)? | QFCLibraryManager | MutexLocker
    | g_GetTagTranslateName
    | fn(Check|Snapshot)Library | Get(Filter|Transition)Record | SaveFilterRecord | DeleteFilter
    | ClearTransitionAndFilter | CreateGalleryDoc | GetGalleryDoc | RegisterGlobalProc
    | GenerateFolder(Path2|Name|DisplayPath|(Name|Path)FromDispalyPath|PathFromName) | GetFolderDisplay(Name|Path)
    | AfxThrow\w+
    | (CloseHandle|CoCreateGuid|CopyFileA|CreateEventA|CreateMutexA|DeleteFileA|GetAppDataFolder|GetLastError
      |GetPrivateProfile(Section|SectionNames|String)A|GetTempFileNameA|GetTempPathA|WritePrivateProfileStringA
      |Global(Alloc|Free|Handle|Lock|Size|Unlock)|PathFileExistsA|ReleaseMutex|ResetEvent
      |SetEvent|SetLastError|Sleep|WaitForSingleObject)
    | qfc::\w+
    )\b""",
    re.VERBOSE,
)
# Words in front of a demangled name, and what a compiler puts around it.
PREFIX = re.compile(r"^(non-virtual thunk to |virtual thunk to |vtable for |typeinfo for |typeinfo name for |VTT for )")
# Exported names of ours that stand beside the interface.
QFC = {
    "AllocGlobalBlock", "AllocPlainBlock", "FreeGlobalBlock", "FreePlainBlock", "GuidFromText", "GuidToText",
    "LibraryFindingName", "NativePath", "RuntimeClassRegistration", "SetAnsiCodePage", "SetDataFolder",
    "SetHostFolder", "SetModuleStrings", "TranslationFilePath", "ReadDibHeader", "DefaultOf", "NumberOf",
    "ReadFilterDescriptor", "ReadFilterTable", "ReadTransitionDescriptor",
    "WriteFilterDescriptor", "WriteFilterTable", "WriteTransitionDescriptor",
}
# What a host cannot do without: each of these names has to be there.
REQUIRED = """
    QFCLibraryManager:: fnStartService fnStopService fnRegister_QFCLibCallBack fnUnRegister_QFCLibCallBack
        GetDatabasePath IsCurrentDBTools StartDbSession4ImportLib EndDbSession4ImportLib fnCreateGallery fnLoadGallery
        fnDeleteGallery fnCreateFolder fnUpdateFolder fnDeleteFolder fnAddItem fnAddItemAsync fnDeleteItem fnUpdateItem
        fnUpdateLibItemThumbnail fnQueryLibItemThumbnailInfo fnExportDB fnClearDBContent fnGetDBName fnListGalleries
        fnCloseSessionGallery QFCLibraryManager ~QFCLibraryManager operator= fnCreateDefaultTag fnLoadLibTag
        fnUpdateTagCategory fnDeleteTagCategory fnUpdateTag fnDeleteTag fnInsertLibTag2Item fnDeleteLibTagFromItem
        fnMergeFaceTag fnAddItemIntoAutoLodedTable fnIsItemInAutoLoadedTable fnAddItemIntoAutoLodedByPathTable
        fnIsItemInAutoLoadedByPathTable fnAddItemAsync_Filter fnAddItemAsync_Transition fnUpdateFilterOptionAsync
        fnUpdateTransitionAsync fnDeleteFilter fnDeleteTransition
    CLibTagsMgr:: GetLibTagMgr GetTagsData IsEmpty GetAllTagList GetCurGalleryAllTag GetTagByName IsTagExisted
        SetTagsToDefault GeneratePresetTagData GenerateCategoryTemplate
    MutexLocker:: MutexLocker ~MutexLocker operator=
    CQItem:: CQItem ~CQItem GetRuntimeClass CreateObject Copy fnLoadItemFromDb LoadCacheDataFromDb ChangeBlackBox
        ChangeCache ChangeFilm UpdateItemDB fnTranslateItemName
    CQFolder:: CQFolder ~CQFolder GetRuntimeClass CreateObject GetFolderByName GetFolderByPath HasItem GetItemByGUID
        AddFolder AddItem RemoveItem Sorting AddItemFromImportLib GetTranslateFolderName IsFolderNameValid
        GetSubFolderByDisplayPath
    CQGallery:: CQGallery ~CQGallery GetRuntimeClass CreateObject AddItem2Map RemoveItemFromMap
    CQGalleryDoc:: CQGalleryDoc ~CQGalleryDoc AddGallery CloseGallery
    DBTools:: DBTools ~DBTools ExportDatabase ClearDatabase InsertOrUpdateFolder QueryGalleries LoadTags
        SaveCategoriesAndTags UpdateCategory UpdateTag DeleteCategory DeleteTag InsertTag2Item DeleteTagFromItem
        MergeTag QueryTagItems LoadFilterFiles LoadTransitions SaveFilterFile DeleteFilterFile SaveTransition
        DeleteTransitionFile ClearFiltersAndTransitions
    CLibTagsMgr:: GetLibTagMgr GetTagsData IsEmpty GetAllTagList GetCurGalleryAllTag GetCurGalleryDateTag
        GetCurGallerySelectedTag GetCurrentGalFaceCategory GetTagByName IsTagCategoryExisted IsTagExisted AddTag
        UpdateCategory UpdateTag DeleteCategory DeleteTag SetTagsToDefault GenerateCategoryTemplate
        GeneratePresetTagData
    CppSQLite3DB:: CppSQLite3DB ~CppSQLite3DB open close execQuery compileStatement
    CppSQLite3Query:: CppSQLite3Query nextRow getIntField getBlobField finalize
    CppSQLite3Statement:: bind execDML execQuery finalize
    :: g_GetTagTranslateName CreateGalleryDoc GetGalleryDoc RegisterGlobalProc GenerateFolderPath2 GenerateFolderName
        GenerateFolderDisplayPath GetFilterRecord GetTransitionRecord SaveFilterRecord DeleteFilter
        ClearTransitionAndFilter
        GenerateFolderNameFromDispalyPath GenerateFolderPathFromDispalyPath GenerateFolderPathFromName
        GetFolderDisplayName GetFolderDisplayPath GetPrivateProfileStringA GetPrivateProfileSectionA
        GetPrivateProfileSectionNamesA WritePrivateProfileStringA fnCheckLibrary fnSnapshotLibrary
        GetAppDataFolder PathFileExistsA CopyFileA DeleteFileA GetTempPathA GetTempFileNameA GetLastError SetLastError
        CreateMutexA CreateEventA SetEvent ResetEvent ReleaseMutex WaitForSingleObject CloseHandle Sleep CoCreateGuid
        GlobalAlloc GlobalLock GlobalUnlock GlobalFree GlobalHandle GlobalSize
    qfc:: SetDataFolder SetHostFolder SetModuleStrings AllocGlobalBlock FreeGlobalBlock AllocPlainBlock FreePlainBlock
        ReadFilterDescriptor ReadFilterTable ReadTransitionDescriptor WriteFilterDescriptor WriteFilterTable
        WriteTransitionDescriptor DefaultOf NumberOf
"""


def required_names():
    scope = ""
    for word in REQUIRED.split():
        if word.endswith("::"):
            scope = "" if word == "::" else word
        else:
            yield scope + word


def is_interface(name):
    name = PREFIX.sub("", name)
    if name.startswith("qfc::"):
        # Templates of headers that hosts include come along with the classes that use them.
        return re.match(r"qfc::(\w+)", name).group(1) in QFC | {"ChainedList", "PayloadBlock", "OperationQueues",
                                                                "CallbackRegistry", "PointerIterator"}
    return bool(INTERFACE.match(name)) or name.startswith("operator+(") or name in {"_init", "_fini"}


def main(library):
    lines = subprocess.run(["nm", "-DC", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    names = [line.split(maxsplit=2)[2] for line in lines.splitlines() if len(line.split(maxsplit=2)) == 3]
    strangers = sorted({name for name in names if not is_interface(name)})
    for name in strangers:
        print("exported but no part of the interface:", name)
    present = {name.split("(")[0] for name in names}
    missing = [name for name in required_names() if name not in present]
    for name in missing:
        print("part of the interface but not exported:", name)
    return 1 if strangers or missing else 0


sys.exit(main(sys.argv[1]))
