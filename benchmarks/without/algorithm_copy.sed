# Walks the nodes of the record's copy.
s/const AlgorithmCopy algo\(/const auto\& algo(/
