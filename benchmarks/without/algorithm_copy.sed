# Walks the nodes of the record's copy.
s/const SnapshotInfo::ZuAlgoInfo algo = /const SnapshotInfo::ZuAlgoInfo\& algo = /
