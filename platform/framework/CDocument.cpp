#include "platform/framework/CDocument.h"

#include <algorithm>

IMPLEMENT_DYNAMIC(CCmdTarget, CObject)
IMPLEMENT_DYNAMIC(CView, CCmdTarget)
IMPLEMENT_DYNAMIC(CDocument, CCmdTarget)

const AFX_MSGMAP* CCmdTarget::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {{0, 0, 0, 0}};
    static const AFX_MSGMAP messageMap{nullptr, entries};
    return &messageMap;
}

const AFX_MSGMAP* CCmdTarget::GetMessageMap() const { return GetThisMessageMap(); }

CView::~CView() {
    if (m_pDocument != nullptr) m_pDocument->RemoveView(this);
}

void CView::OnUpdate(CView*, LPARAM, CObject*) {}

CDocument::~CDocument() {
    for (CView* view : m_views) view->m_pDocument = nullptr;
}

void CDocument::AddView(CView* view) {
    if (view == nullptr || view->m_pDocument == this) return;
    if (view->m_pDocument != nullptr) view->m_pDocument->RemoveView(view);
    m_views.push_back(view);
    view->m_pDocument = this;
}

void CDocument::RemoveView(CView* view) {
    // The address is searched before it is read: the view may belong elsewhere.
    if (std::erase(m_views, view) != 0) view->m_pDocument = nullptr;
}

void CDocument::UpdateAllViews(CView* sender, LPARAM hint, CObject* object) {
    const std::vector<CView*> views = m_views;
    for (CView* view : views) {
        if (view == sender) continue;
        if (std::find(m_views.begin(), m_views.end(), view) == m_views.end()) continue;
        view->OnUpdate(sender, hint, object);
    }
}
