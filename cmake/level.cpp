// Keeps a level's object library non-empty while it holds headers only.
