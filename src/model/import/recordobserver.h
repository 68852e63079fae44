#pragma once

namespace Atelier::Vel {

class ObjReader;
struct ObjRun;

/// Sees the records of an OBJ text while a load reads them, so that an examination needs no reading of its
/// own. With an observer, lines of all keywords are records.
class RecordObserver {
public:
    RecordObserver() = default;
    virtual ~RecordObserver() = default;
    RecordObserver(const RecordObserver&) = delete;
    RecordObserver& operator=(const RecordObserver&) = delete;

    /// The run for the next plain lines. It is empty.
    virtual ObjRun& run() = 0;
    /// Called when `reader` has added lines to run(). The load takes and empties it afterwards.
    virtual void takeRun(const ObjReader& reader) = 0;
    /// Called for every other line of the text that `reader` has stopped at. `isRead` is what
    /// ObjReader::read() has returned.
    virtual void takeRecord(const ObjReader& reader, bool isRead) = 0;
    /// Called behind the last line.
    virtual void finish() = 0;
};

} // namespace Atelier::Vel
