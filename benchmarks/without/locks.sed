# Updates and flushes without a lock.
s/mQueue\.mutex\.(lock|unlock)\(\);//
