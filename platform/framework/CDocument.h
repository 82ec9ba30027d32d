#pragma once

#include "platform/Export.h"
#include "platform/framework/CObject.h"
#include "platform/framework/Types.h"

#include <vector>

// One row of a message map; a row whose code and identifier are 0 ends the table.
struct AFX_MSGMAP_ENTRY {
    UINT nMessage;
    UINT nCode;
    UINT nID;
    UINT nLastID;
};

struct AFX_MSGMAP {
    const AFX_MSGMAP* (*pfnGetBaseMap)();
    const AFX_MSGMAP_ENTRY* lpEntries;
};

// Base of what can own a message map. No thread rules of its own.
class QFCLIB_API CCmdTarget : public CObject {
    DECLARE_DYNAMIC(CCmdTarget)

public:
    CCmdTarget() = default;

protected:
    static const AFX_MSGMAP* GetThisMessageMap();
    virtual const AFX_MSGMAP* GetMessageMap() const;
};

#define DECLARE_MESSAGE_MAP()                         \
protected:                                            \
    static const AFX_MSGMAP* GetThisMessageMap();     \
    const AFX_MSGMAP* GetMessageMap() const override; \
                                                      \
private:

#define BEGIN_MESSAGE_MAP(theClass, baseClass)                                        \
    const AFX_MSGMAP* theClass::GetMessageMap() const { return GetThisMessageMap(); } \
    const AFX_MSGMAP* theClass::GetThisMessageMap() {                                 \
        static const AFX_MSGMAP* (*const baseMap)() = &baseClass::GetThisMessageMap;  \
        static const AFX_MSGMAP_ENTRY entries[] = {
#define END_MESSAGE_MAP()                                 \
    { 0, 0, 0, 0 }                                        \
    }                                                     \
    ;                                                     \
    static const AFX_MSGMAP messageMap{baseMap, entries}; \
    return &messageMap;                                   \
    }

class CDocument;

// Something that shows a document and is told when it changes. Lives on the thread of its document.
class QFCLIB_API CView : public CCmdTarget {
    DECLARE_DYNAMIC(CView)

public:
    CView() = default;
    ~CView() override;
    CView(const CView&) = delete;
    CView& operator=(const CView&) = delete;

    // Null while no document holds the view.
    CDocument* GetDocument() const { return m_pDocument; }

protected:
    friend class CDocument;
    // Called by UpdateAllViews; the base has nothing to draw.
    virtual void OnUpdate(CView* sender, LPARAM hint, CObject* object);

private:
    CDocument* m_pDocument = nullptr;
};

// A document and the list of its views, which it does not own. One thread at a time.
class QFCLIB_API CDocument : public CCmdTarget {
    DECLARE_DYNAMIC(CDocument)

public:
    CDocument() = default;
    ~CDocument() override;
    CDocument(const CDocument&) = delete;
    CDocument& operator=(const CDocument&) = delete;

    // A view belongs to one document: adding it here takes it from another one.
    void AddView(CView* view);
    void RemoveView(CView* view);

    // Calls OnUpdate of every view but the sender, in the order in which they were added, before it returns. A view
    // may remove itself or others meanwhile: removed ones are no longer called.
    void UpdateAllViews(CView* sender, LPARAM hint = 0, CObject* object = nullptr);

private:
    std::vector<CView*> m_views;
};
