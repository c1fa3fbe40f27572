"""What bench/compare is made of: a module for each kind of work, and what they share."""
