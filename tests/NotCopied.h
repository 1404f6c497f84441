#pragma once

/// A base of classes that are neither copied nor assigned.
struct NotCopied {
    NotCopied() = default;
    NotCopied(const NotCopied&) = delete;
    NotCopied& operator=(const NotCopied&) = delete;
};
