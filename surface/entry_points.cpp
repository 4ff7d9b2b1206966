// C entry points (filled in as the subsystems land).
