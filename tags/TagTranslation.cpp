#include "tags/TagTranslation.h"

#include "platform/text/CodePages.h"
#include "tags/CLibTagsMgr.h"

CString qfc::TranslateTagName(TranslationBuffer& buffer, const CString& file, const CString& name) {
    if (IsNameless(name)) return name;
    const CString text = CDBStringHelper::UTF_82ASCII(buffer.Read(file, kTagSection, name));
    return text.IsEmpty() ? name : text;
}

CString g_GetTagTranslateName(const CString& strName) {
    static qfc::TranslationBuffer buffer;
    return qfc::TranslateTagName(buffer, qfc::TranslationFilePath(), strName);
}
