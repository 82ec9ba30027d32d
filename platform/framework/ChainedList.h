#pragma once

#include "platform/framework/Exceptions.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

struct qfcPosition;
// A place in a list, null for none. It stays valid until its own element is removed.
using POSITION = qfcPosition*;

namespace qfc {

// The doubly linked list behind the framework's list classes. A null position where an element is needed throws
// CInvalidArgException*, as do the head and tail of an empty list. Not locked: one thread at a time.
template <class T>
class ChainedList {
    struct Node {
        Node* previous;
        Node* next;
        T value;
    };

public:
    class const_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T*;
        using reference = const T&;

        const_iterator() = default;
        reference operator*() const { return m_node->value; }
        pointer operator->() const { return &m_node->value; }
        const_iterator& operator++() {
            m_node = m_node->next;
            return *this;
        }
        const_iterator operator++(int) { return const_iterator(std::exchange(m_node, m_node->next)); }
        bool operator==(const const_iterator&) const = default;

    private:
        friend class ChainedList;
        explicit const_iterator(const Node* node) : m_node(node) {}
        const Node* m_node = nullptr;
    };

    // The block size is only a hint for allocation and has no visible effect.
    explicit ChainedList(int blockSize = 10) { static_cast<void>(blockSize); }
    ~ChainedList() { RemoveAll(); }
    ChainedList(const ChainedList&) = delete;
    ChainedList& operator=(const ChainedList&) = delete;

    int GetCount() const { return m_count; }
    int GetSize() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }

    T& GetHead() { return NodeAt(m_head)->value; }
    const T& GetHead() const { return NodeAt(m_head)->value; }
    T& GetTail() { return NodeAt(m_tail)->value; }
    const T& GetTail() const { return NodeAt(m_tail)->value; }

    POSITION AddHead(T value) { return Link(nullptr, m_head, std::move(value)); }
    POSITION AddTail(T value) { return Link(m_tail, nullptr, std::move(value)); }
    T RemoveHead() { return Unlink(NodeAt(m_head)); }
    T RemoveTail() { return Unlink(NodeAt(m_tail)); }
    void RemoveAll() {
        while (m_head != nullptr) delete std::exchange(m_head, m_head->next);
        m_tail = nullptr;
        m_count = 0;
        CountChange();
    }

    POSITION GetHeadPosition() const { return AsPosition(m_head); }
    POSITION GetTailPosition() const { return AsPosition(m_tail); }
    // The element AT the position, which then moves on; null behind the last one.
    T& GetNext(POSITION& position) { return Step(position, &Node::next)->value; }
    const T& GetNext(POSITION& position) const { return Step(position, &Node::next)->value; }
    T& GetPrev(POSITION& position) { return Step(position, &Node::previous)->value; }
    const T& GetPrev(POSITION& position) const { return Step(position, &Node::previous)->value; }

    T& GetAt(POSITION position) { return NodeAt(position)->value; }
    const T& GetAt(POSITION position) const { return NodeAt(position)->value; }
    void SetAt(POSITION position, T value) {
        NodeAt(position)->value = std::move(value);
        CountChange();
    }
    void RemoveAt(POSITION position) { Unlink(NodeAt(position)); }

    // Both return the position of the NEW element. A null position means the head for InsertBefore, the tail for
    // InsertAfter.
    POSITION InsertBefore(POSITION position, T value) {
        if (position == nullptr) return AddHead(std::move(value));
        Node* next = NodeAt(position);
        return Link(next->previous, next, std::move(value));
    }
    POSITION InsertAfter(POSITION position, T value) {
        if (position == nullptr) return AddTail(std::move(value));
        Node* previous = NodeAt(position);
        return Link(previous, previous->next, std::move(value));
    }

    // The first equal element behind `after` (from the head when null), or null.
    template <class U>
    POSITION Find(const U& value, POSITION after = nullptr) const {
        Node* node = after != nullptr ? NodeAt(after)->next : m_head;
        while (node != nullptr && !(node->value == value)) node = node->next;
        return AsPosition(node);
    }
    // Null when the list has no such element.
    POSITION FindIndex(int index) const {
        if (index < 0 || index >= m_count) return nullptr;
        Node* node = m_head;
        while (index-- > 0) node = node->next;
        return AsPosition(node);
    }

    const_iterator begin() const { return const_iterator(m_head); }
    const_iterator end() const { return const_iterator(); }

    // Every change of the list is counted there as well; null (at first) for nowhere. The counter outlives the list.
    // Elements replaced through a reference are not noticed.
    void SetChangeCounter(std::atomic<std::uint64_t>* counter) { m_changeCounter = counter; }
    std::atomic<std::uint64_t>* ChangeCounter() const { return m_changeCounter; }

private:
    void CountChange() {
        if (m_changeCounter != nullptr) m_changeCounter->fetch_add(1, std::memory_order_relaxed);
    }
    static POSITION AsPosition(Node* node) { return reinterpret_cast<POSITION>(node); }
    static Node* NodeAt(POSITION position) { return NodeAt(reinterpret_cast<Node*>(position)); }
    static Node* NodeAt(Node* node) {
        if (node == nullptr) AfxThrowInvalidArgException();
        return node;
    }
    static Node* Step(POSITION& position, Node* Node::*direction) {
        Node* node = NodeAt(position);
        position = AsPosition(node->*direction);
        return node;
    }

    POSITION Link(Node* previous, Node* next, T value) {
        Node* node = new Node{previous, next, std::move(value)};
        (previous != nullptr ? previous->next : m_head) = node;
        (next != nullptr ? next->previous : m_tail) = node;
        ++m_count;
        CountChange();
        return AsPosition(node);
    }
    T Unlink(Node* node) {
        T value = std::move(node->value);
        (node->previous != nullptr ? node->previous->next : m_head) = node->next;
        (node->next != nullptr ? node->next->previous : m_tail) = node->previous;
        --m_count;
        CountChange();
        delete node;
        return value;
    }

    Node* m_head = nullptr;
    Node* m_tail = nullptr;
    int m_count = 0;
    std::atomic<std::uint64_t>* m_changeCounter = nullptr;  // Not owned.
};

}  // namespace qfc
