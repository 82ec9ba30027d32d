#pragma once

#include "platform/Export.h"
#include "platform/framework/CObject.h"
#include "platform/framework/CString.h"
#include "platform/framework/ChainedList.h"
#include "platform/framework/PointerIterator.h"

#include <vector>

// List of object pointers. It never deletes the objects. Not locked: one thread at a time, as all of these classes.
class QFCLIB_API CObList : public CObject, public qfc::ChainedList<CObject*> {
    DECLARE_SERIAL(CObList)

public:
    explicit CObList(int blockSize = 10) : ChainedList(blockSize) {}
};

// List of strings.
class QFCLIB_API CStringList : public CObject, public qfc::ChainedList<CString> {
    DECLARE_SERIAL(CStringList)

public:
    explicit CStringList(int blockSize = 10) : ChainedList(blockSize) {}
};

// Array of object pointers, which may be null and are never deleted here. An index outside throws
// CInvalidArgException* and changes nothing.
class QFCLIB_API CObArray : public CObject {
    DECLARE_SERIAL(CObArray)

public:
    CObArray();

    int GetSize() const { return static_cast<int>(m_elements.size()); }
    int GetCount() const { return GetSize(); }
    // -1 when empty.
    int GetUpperBound() const { return GetSize() - 1; }
    bool IsEmpty() const { return m_elements.empty(); }
    // New places are null.
    void SetSize(int size, int growBy = -1);
    void RemoveAll() {
        m_elements.clear();
        ++m_modifications;
    }

    CObject* GetAt(int index) const;
    CObject* operator[](int index) const { return GetAt(index); }
    CObject*& operator[](int index) { return ElementAt(index); }
    // The place itself: what is written there later, this array does not notice (NoticesChanges).
    CObject*& ElementAt(int index);
    void SetAt(int index, CObject* element);

    // The index of the new element.
    int Add(CObject* element);
    // What stands at the index and behind moves up; an index behind the end first fills up with nulls.
    void InsertAt(int index, CObject* element, int count = 1);
    void RemoveAt(int index, int count = 1);

    std::vector<CObject*>::const_iterator begin() const { return m_elements.begin(); }
    std::vector<CObject*>::const_iterator end() const { return m_elements.end(); }

    // Once it has returned, the next Add cannot run out of memory. No modification.
    void MakeRoomForOne();

    // Grows with every call that changes the array or could: what was derived from it is good while this stands still.
    // No two arrays of a process ever have the same count, not even one after the other at the same address.
    unsigned long long ModificationCount() const { return m_modifications; }
    // False for good once a place was handed out.
    bool NoticesChanges() const { return m_noticesChanges; }

private:
    std::vector<CObject*> m_elements;
    unsigned long long m_modifications;
    bool m_noticesChanges = true;
};

// A list class of object pointers that speaks only of TYPE, itself a pointer type. TYPE must be complete where members
// are called.
template <class BASE, class TYPE>
class CTypedPtrList : public BASE {
public:
    using const_iterator = qfc::PointerIterator<decltype(std::declval<const BASE&>().begin()), TYPE>;

    explicit CTypedPtrList(int blockSize = 10) : BASE(blockSize) {}

    TYPE GetHead() const { return static_cast<TYPE>(BASE::GetHead()); }
    TYPE GetTail() const { return static_cast<TYPE>(BASE::GetTail()); }
    TYPE RemoveHead() { return static_cast<TYPE>(BASE::RemoveHead()); }
    TYPE RemoveTail() { return static_cast<TYPE>(BASE::RemoveTail()); }
    POSITION AddHead(TYPE element) { return BASE::AddHead(element); }
    POSITION AddTail(TYPE element) { return BASE::AddTail(element); }
    TYPE GetNext(POSITION& position) const { return static_cast<TYPE>(BASE::GetNext(position)); }
    TYPE GetPrev(POSITION& position) const { return static_cast<TYPE>(BASE::GetPrev(position)); }
    TYPE GetAt(POSITION position) const { return static_cast<TYPE>(BASE::GetAt(position)); }
    void SetAt(POSITION position, TYPE element) { BASE::SetAt(position, element); }
    POSITION InsertBefore(POSITION position, TYPE element) { return BASE::InsertBefore(position, element); }
    POSITION InsertAfter(POSITION position, TYPE element) { return BASE::InsertAfter(position, element); }

    const_iterator begin() const { return const_iterator(BASE::begin()); }
    const_iterator end() const { return const_iterator(BASE::end()); }
};

// The same for an array class. Elements are handed out by value; SetAt replaces one.
template <class BASE, class TYPE>
class CTypedPtrArray : public BASE {
public:
    using const_iterator = qfc::PointerIterator<decltype(std::declval<const BASE&>().begin()), TYPE>;

    TYPE GetAt(int index) const { return static_cast<TYPE>(BASE::GetAt(index)); }
    TYPE ElementAt(int index) const { return GetAt(index); }
    TYPE operator[](int index) const { return GetAt(index); }
    void SetAt(int index, TYPE element) { BASE::SetAt(index, element); }
    int Add(TYPE element) { return BASE::Add(element); }
    void InsertAt(int index, TYPE element, int count = 1) { BASE::InsertAt(index, element, count); }

    const_iterator begin() const { return const_iterator(BASE::begin()); }
    const_iterator end() const { return const_iterator(BASE::end()); }
};
