# Reports from the queue's own record, nodes included.
s/const RequestRecord record = /const RequestRecord\& record = /
s/const SnapshotInfo::ZuAlgoInfo algo = /const SnapshotInfo::ZuAlgoInfo\& algo = /
