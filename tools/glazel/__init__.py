"""The front door of Glazel DX."""
