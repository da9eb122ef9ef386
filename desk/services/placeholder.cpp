// Filled by the first class of this folder.
