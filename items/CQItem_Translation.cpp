#include "api/names/Translation.h"
#include "items/CQItem.h"
#include "platform/text/CodePages.h"

int CQItem::fnTranslateItemName() {
    if (!qfc::IsTranslationOn() || !qfc::IsTranslatedType(m_dwItemType)) return 0;
    if (qfc::IsTranslationCollected()) return qfc::WriteTranslation(m_dwItemType, m_strItemName, false);
    m_strTranslateName = CDBStringHelper::UTF_82ASCII(qfc::LookUpTranslation(m_dwItemType, m_strItemName, false));
    if (m_strTranslateName.IsEmpty()) return 0;
    m_strItemName = m_strTranslateName;
    return 1;
}
