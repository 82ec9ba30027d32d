#include "platform/framework/Collections.h"

#include <algorithm>
#include <atomic>

namespace {

// Far enough apart that no array's count reaches the next one's.
unsigned long long FirstModificationCount() {
    static std::atomic<unsigned long long> arrays = 0;
    return ++arrays << 32;
}

}  // namespace

IMPLEMENT_SERIAL(CObList, CObject, 0)
IMPLEMENT_SERIAL(CStringList, CObject, 0)
IMPLEMENT_SERIAL(CObArray, CObject, 0)

CObArray::CObArray() : m_modifications(FirstModificationCount()) {}

void CObArray::SetSize(int size, int /*growBy*/) {
    if (size < 0) AfxThrowInvalidArgException();
    m_elements.resize(static_cast<std::size_t>(size));
    ++m_modifications;
}

CObject* CObArray::GetAt(int index) const {
    if (index < 0 || index >= GetSize()) AfxThrowInvalidArgException();
    return m_elements[static_cast<std::size_t>(index)];
}

CObject*& CObArray::ElementAt(int index) {
    if (index < 0 || index >= GetSize()) AfxThrowInvalidArgException();
    ++m_modifications;  // the caller may write through the reference
    m_noticesChanges = false;
    return m_elements[static_cast<std::size_t>(index)];
}

void CObArray::SetAt(int index, CObject* element) {
    if (index < 0 || index >= GetSize()) AfxThrowInvalidArgException();
    ++m_modifications;
    m_elements[static_cast<std::size_t>(index)] = element;
}

void CObArray::MakeRoomForOne() {
    constexpr std::size_t kFirstRoom = 16;
    if (m_elements.size() == m_elements.capacity()) m_elements.reserve(std::max(kFirstRoom, 2 * m_elements.size()));
}

int CObArray::Add(CObject* element) {
    m_elements.push_back(element);
    ++m_modifications;
    return GetUpperBound();
}

void CObArray::InsertAt(int index, CObject* element, int count) {
    if (index < 0 || count <= 0) AfxThrowInvalidArgException();
    if (index > GetSize()) SetSize(index);
    m_elements.insert(m_elements.begin() + index, static_cast<std::size_t>(count), element);
    ++m_modifications;
}

void CObArray::RemoveAt(int index, int count) {
    if (index < 0 || count < 0 || index > GetSize() || count > GetSize() - index) AfxThrowInvalidArgException();
    m_elements.erase(m_elements.begin() + index, m_elements.begin() + index + count);
    ++m_modifications;
}
