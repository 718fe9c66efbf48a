# What the link check and the site have to know about a document: its headings, fences and links.
package Markdown;

use strict;
use warnings;
use utf8;

# The anchor under which a heading is reached, as the pages of code hosts make it.
sub anchor_of {
    my ($heading) = @_;
    my $anchor = lc $heading;
    $anchor =~ s/!?\[([^\]]*)\]\([^)]*\)/$1/g;
    $anchor =~ s/[^\w\- ]//g;
    $anchor =~ s/ /-/g;
    return $anchor;
}

sub lines_of {
    my ($file) = @_;
    open my $handle, '<:encoding(UTF-8)', $file or die "$file: $!\n";
    my @lines = <$handle>;
    chomp @lines;
    return @lines;
}

# Calls $visitor->{text}, ->{heading} and ->{fence} with each line of that kind. A fence comes as a whole: its language and
# its lines.
sub walk {
    my ($file, $visitor) = @_;
    my ($number, $language, @fenced) = (0);
    for my $line (lines_of($file)) {
        ++$number;
        if (defined $language) {
            if ($line =~ /^```\s*$/) {
                $visitor->{fence}->($language, $number, @fenced);
                undef $language;
                @fenced = ();
            } else {
                push @fenced, $line;
            }
        } elsif ($line =~ /^```(\S*)\s*$/) {
            $language = $1;
        } elsif ($line =~ /^(#+) (.*?)\s*$/) {
            $visitor->{heading}->(length $1, $2, $number);
        } else {
            $visitor->{text}->($line, $number);
        }
    }
    die "$file: a fence is not closed\n" if defined $language;
}

# Replaces each link and image outside of code spans by what $replace says; ($mark, $text, $target) are its arguments.
sub replace_links {
    my ($line, $replace) = @_;
    my @pieces = split /(`+[^`]*`+)/, $line;
    my ($whole, @spans) = ('');
    for my $piece (@pieces) {    # code spans may stand inside of a link's text, so they are only put aside
        if ($piece =~ /^`/) {
            $whole .= "\x{1}" . scalar(@spans) . "\x{2}";
            push @spans, $piece;
        } else {
            $whole .= $piece;
        }
    }
    $whole =~ s/(!?)\[([^\]]*)\]\(([^)\s]+)\)/$replace->($1, $2, $3)/ge;
    $whole =~ s/\x{1}(\d+)\x{2}/$spans[$1]/g;
    return $whole;
}

1;
