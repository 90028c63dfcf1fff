#pragma once

/// The telephone's own call journal, found under the service name "JournalServiceIfc".
class JournalServiceIfc {
public:
    virtual ~JournalServiceIfc() = default;

    /// Drops what the journal holds of the former user. Any thread.
    virtual void cleanUp() = 0;
};
