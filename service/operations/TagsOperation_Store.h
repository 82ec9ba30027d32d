#pragma once

#include "service/operations/TagsOperation.h"

// Makes the default categories and tags: stored beside what is there, while the tag store then holds nothing else.
class CLibTagsOperation_CreateDefaultTags : public CLibTagsOperation {
public:
    using CLibTagsOperation::CLibTagsOperation;

    // 0, and nothing changed in database or store, when the files give no category and when the write fails.
    int execute() override;
};

// Appends every stored category to the tag store.
class CLibTagsOperation_Load : public CLibTagsOperation {
public:
    using CLibTagsOperation::CLibTagsOperation;

    // 1 also for a library without categories.
    int execute() override;
};
