' cscript nothing.vbs: nothing.
