# Locks the mutex once.
/Deliberate: passes the mutex once/,+2 { /mutex\.(lock|unlock)/d }
