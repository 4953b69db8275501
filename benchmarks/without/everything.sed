# Leaves each of the manager's operations at its begin: what remains is the caller's part.
/^void InfoSynchronizerManager::.*\{$/ {
    s/$/ return;/
    b
}
/^void InfoSynchronizerManager::/,/\{$/ s/\{$/{ return;/
